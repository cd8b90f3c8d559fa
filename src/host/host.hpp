// The one interface through which the engine reaches its surroundings.
//
// The engine includes this header and nothing else of the host layer. What a
// host does (command line, test harness, later the Python module) stands
// behind the abstract class Host; pure services that every host shares (date
// primitives, format rendering, the message catalogue) are free functions
// declared in the headers this one includes.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace qvt {

enum class Severity : std::uint8_t { Note, Warning, Error };

// One argument of a message: a whole number, a real number or a text.
using MsgArg = std::variant<long long, double, std::string>;

// Where in a program text a statement or token stands (1-based line and
// column); an empty file means the program came from the command line.
struct SourcePos {
  std::string file;
  int line = 0;
  int col = 0;
};

// Variable kinds of a data set.
enum class VarType : std::uint8_t { Numeric, Character };

// What the engine may know of one variable of a data set.
struct VarInfo {
  std::string name;    // up to 32 characters, case kept
  std::string label;
  VarType type = VarType::Numeric;
  int length = 8;      // bytes; 8 for numbers
  std::string format;  // e.g. "DATE9." or empty
};

class Host {
 public:
  virtual ~Host() = default;

  // Writes a message of the catalogue to the log. `at` names the place in
  // the program text when the message concerns a statement.
  virtual void msgLog(int group, int number, std::span<const MsgArg> args,
                      const SourcePos* at = nullptr) = 0;
};

inline void hostMsgLog(Host& h, int group, int number, std::initializer_list<MsgArg> args = {},
                       const SourcePos* at = nullptr) {
  h.msgLog(group, number, std::span<const MsgArg>(args.begin(), args.size()), at);
}

}  // namespace qvt
