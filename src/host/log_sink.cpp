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
  // Other control characters of the data (an escape sequence in a BY value)
  // are shown as \xNN, so that they can't act on the terminal.
  const auto put = [&line](std::string_view part) {
    for (const char c : part) {
      const auto u = static_cast<unsigned char>(c);
      if (c == '\n') {
        line += "\n    ";
      } else if (c == '\r') {
        line += ' ';
      } else if ((u < 0x20 && c != '\t') || u == 0x7F) {
        static constexpr char kHex[] = "0123456789ABCDEF";
        line += "\\x";
        line += kHex[u >> 4];
        line += kHex[u & 15];
      } else {
        line += c;
      }
    }
  };
  put(text);
  if (!byGroup.empty()) {
    // A long BY value would repeat in full on every line of its group; the
    // JSON line keeps it whole.
    constexpr std::size_t kShown = 200;
    std::size_t cut = byGroup.size();
    if (cut > kShown) {
      cut = kShown;
      while (cut > 0 && (static_cast<unsigned char>(byGroup[cut]) & 0xC0) == 0x80) --cut;  // not inside a character
    }
    line += " (BY group ";
    put(byGroup.substr(0, cut));
    line += cut < byGroup.size() ? "...)" : ")";
  }
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
