// Splitting a program into procedure steps. A step starts at the QVT
// statement and ends at RUN;, at the next QVT statement, or at the end of
// the text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/host.hpp"
#include "statements/token.hpp"

namespace qvt {

struct Step {
  std::size_t first = 0;  // index of the QVT token
  std::size_t last = 0;   // one past the last token of the step (RUN; excluded)
  std::uint32_t beginOffset = 0;  // slice of the program text that belongs to the step
  std::uint32_t endOffset = 0;
  bool endedByRun = false;
  SourcePos pos;  // place of the QVT statement
};

// The steps of a scanned program. Statements before the first QVT statement
// belong to no step: each gets an error message. A program without any
// statement gets the message of an empty program. `nerrors`, when given,
// receives the number of errors reported here.
std::vector<Step> splitSteps(const Program& prog, Host& host, int* nerrors = nullptr);

}  // namespace qvt
