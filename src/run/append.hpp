// Between the series loop and the models: the choice of the model, the
// statistics of the fit and of the BACK= range, the completion of the OUT=
// series and the forecast columns of the summary row.
#pragma once

#include "intermittent/idmodel.hpp"
#include "run/qvtcom.hpp"
#include "smoothing/esmtypes.hpp"

namespace qvt {

// Settles current.modelcode and current.trnscode. An explicit model with an
// explicit transformation passes through; 0, or -1 after its message.
int best(QVTCOM* com, int nseasons);

// In-sample statistics of fit, of the intermittent model idm when the series
// has one, else of the smoothing model esm; always 0.
int evaluation(QVTCOM* com, IDMODEL* idm, const WINMODEL* esm, const FOR_OUT* fore);

// Statistics of the BACK= range; always 0.
int performance(QVTCOM* com, IDMODEL* idm, const WINMODEL* esm, const FOR_OUT* fore);

// The forecast columns of the summary row; always 0.
int summation(QVTCOM* com, WINMODEL* esm, const FOR_OUT* fore);

// Completes `out` (out.y) by USE=, REPLACEMISSING and REPLACEBACK.
void append(QVTCOM* com, const FOR_OUT* fore, double* out);

}  // namespace qvt
