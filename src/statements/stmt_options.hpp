// Names of the flag bits and fields of the statement records, for messages
// and for the JSON rendering. The numbers are those that the grammar writes.
#pragma once

#include <span>
#include <string>

#include "statements/codes.hpp"

namespace qvt {

enum class RecordKind { Procedure, Forecast };

// Option of a field ("LEAD", "SETMISSING", "INTERVAL=(LEVELREST)"); empty
// for a field that no option writes.
std::string fieldOption(RecordKind kind, int field);

// Option of a flag bit ("NOOUTALL", "PRINT=ALL", "SIZE=(NOEST)"); empty for a bit that no option sets.
std::string bitOption(RecordKind kind, int bit);

// The code table by which a field's number is a keyword, or an empty span.
std::span<const CodeName> fieldCodes(RecordKind kind, int field);

}  // namespace qvt
