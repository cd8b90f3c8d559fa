// Lookup of the method table. A method whose kernels are not part of this
// build answers null, and the driver turns that into -999.
#include "smoothing/esmkset.hpp"

namespace qvt {

const ESMMODELSET* esmmodelset(int method) noexcept {
  switch (method) {
    case kEsmSimple: return &kEsmSimpleSet;
    case kEsmLinear: return &kEsmLinearSet;
    case kEsmDampTrend: return &kEsmDampTrendSet;
    case kEsmDouble: return &kEsmDoubleSet;
    case kEsmSeasonal: return &kEsmSeasonalSet;
    case kEsmAddWinters: return &kEsmAddWintersSet;
    case kEsmWinters: return &kEsmWintersSet;
    case kEsmMultSeasonal: return &kEsmMultSeasonalSet;
    default: return nullptr;
  }
}

}  // namespace qvt
