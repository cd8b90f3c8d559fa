// Opening the data sets that the procedure statement names, and taking
// their facts into DATASETS.
#pragma once

#include <string>

#include "run/qvtcom.hpp"
#include "statements/procstr.hpp"

namespace qvt {

// The name to hand to hostDsOpen for a data set field: empty for a default
// (the host's default input), a quoted path with its quotes back, else the
// name as written.
std::string qvtpDsName(const DataSetName& ds);

// Opens the data set of field f in the given mode and fills ds: the handle
// in fileid, the library, member, label and display name from hostDsInfo.
// The result is that of hostDsOpen; on failure ds is left null and the host
// has reported the problem (except kHostNoInput, which is the caller's to
// report).
int qvtpDsOpen(QVTCOM* com, const STLIST& f, DsMode mode, DATASETS* ds);

}  // namespace qvt
