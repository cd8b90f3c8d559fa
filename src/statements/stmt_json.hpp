// A JSON rendering of the statement records, for `qvt check` and the tests.
//
// For each record: the statement name, the flag bits that are set (number
// and option), and each given field (number, option, kind, value). Places in
// the program text are left out, so that the same statements written
// anywhere and in any spelling render the same.
#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "statements/procstr.hpp"

namespace qvt {

nlohmann::json stmtJson(const PROCSTR& p);

// stmtJson as text; indent < 0 gives one line.
std::string stmtJsonText(const PROCSTR& p, int indent = 2);

}  // namespace qvt
