#include "host/log_sink.hpp"

#include <cmath>
#include <nlohmann/json.hpp>

#include "host/catalog.hpp"

namespace qvt {

std::string_view severityName(Severity s) noexcept {
  switch (s) {
    case Severity::Note: return "NOTE";
    case Severity::Warning: return "WARNING";
    case Severity::Error: return "ERROR";
  }
  return "ERROR";
}

Severity logSeverity(int group, int number) noexcept {
  const CatalogEntry* e = catalogFind(group, number);
  return e ? e->severity : Severity::Error;
}

namespace {

std::string messageText(int group, int number, std::span<const MsgArg> args) {
  if (const CatalogEntry* e = catalogFind(group, number)) return catalogFormat(*e, args);
  return "Message " + std::to_string(group) + "-" + std::to_string(number) +
         " is missing from the catalogue (" + std::to_string(args.size()) + " arguments).";
}

}  // namespace

std::string logTextLine(int group, int number, std::span<const MsgArg> args, std::string_view byGroup) {
  std::string line(severityName(logSeverity(group, number)));
  line += ": ";
  const std::string text = messageText(group, number, args);
  // Every line after the first is indented, so that a line of the message
  // (the program line under a syntax error and its caret, or a line break
  // inside a data value) can't be read as a message of its own. The program
  // line and its caret keep their alignment: both get the same indent.
  for (const char c : text) {
    if (c == '\n') line += "\n    ";
    else line += c == '\r' ? ' ' : c;
  }
  if (!byGroup.empty()) line.append(" (BY group ").append(byGroup).append(")");
  return line;
}

std::string logJsonLine(int group, int number, std::span<const MsgArg> args, const SourcePos* at,
                        std::string_view byGroup) {
  nlohmann::json j;
  j["group"] = group;
  j["number"] = number;
  j["severity"] = severityName(logSeverity(group, number));
  nlohmann::json a = nlohmann::json::array();
  for (const MsgArg& v : args) {
    std::visit(
        [&](const auto& x) {
          using T = std::decay_t<decltype(x)>;
          if constexpr (std::is_same_v<T, double>) {
            if (std::isfinite(x)) a.push_back(x); else a.push_back(nullptr);  // missing values
          } else {
            a.push_back(x);
          }
        },
        v);
  }
  j["args"] = std::move(a);
  j["text"] = messageText(group, number, args);
  if (at && at->line > 0) {
    j["file"] = at->file;
    j["line"] = at->line;
    j["col"] = at->col;
  }
  if (!byGroup.empty()) j["by"] = byGroup;
  // Invalid UTF-8 in an argument (a bad file name) is replaced, never thrown.
  return j.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace qvt
