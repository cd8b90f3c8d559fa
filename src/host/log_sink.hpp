// The log: one message a line, as text ("WARNING: ...") or as one JSON object
// a line for tests and scripts that assert on message numbers.
#pragma once

#include <ostream>
#include <span>
#include <string>

#include "host/host.hpp"

namespace qvt {

enum class LogFormat : std::uint8_t { Text, Jsonl };

// "NOTE", "WARNING" or "ERROR".
std::string_view severityName(Severity s) noexcept;

// The text of a message, without the line end: one line, or more with every
// line after the first indented by four blanks. A message that the
// catalogue lacks is logged as an ERROR that names its group and number, so
// that a missing row never hides a message. The place of a statement
// message is the first argument of its text ("prog.qvt, line 6, column
// 20: ..."), so the line adds none; the JSON line carries it as fields. A
// message given inside a BY group ends with the group: " (BY group
// region=east)".
std::string logTextLine(int group, int number, std::span<const MsgArg> args, std::string_view byGroup = {});

// The JSON line: {"group":..,"number":..,"severity":..,"args":[..],"text":..}
// plus "file", "line", "col" when the message has a place in the program,
// and "by" with the BY group ("region=east, store=1") inside one.
std::string logJsonLine(int group, int number, std::span<const MsgArg> args, const SourcePos* at,
                        std::string_view byGroup = {});

// Severity a message is logged with (ERROR for one missing from the catalogue).
Severity logSeverity(int group, int number) noexcept;

}  // namespace qvt
