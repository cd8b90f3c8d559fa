// The commands of the qvt program, apart from argument parsing, so that the
// tests can call them on a host of their own.
#pragma once

#include <iosfwd>
#include <string>

#include "host/process_host.hpp"

namespace qvt::cli {

// Where the program text comes from: a file, or the text of -e.
struct ProgramSource {
  std::string file;  // empty: `text` holds the program (from -e)
  std::string text;
};

// Exit statuses of the qvt program.
inline constexpr int kExitOk = 0;
inline constexpr int kExitWarning = 1;  // --strict and a warning
inline constexpr int kExitFailed = 2;   // some step ended above 4
inline constexpr int kExitUsage = 64;   // the command itself was misused

// Group of the command line's own messages in the catalogue.
inline constexpr int kMsgGroupCli = 901;

// Reads the program text of a file into src.text; 0, or a logged failure.
int loadProgram(ProcessHost& host, ProgramSource& src);

// qvt check: parses every step, resolves the variable lists against the
// input where it can be opened, and writes the statement records as JSON
// to `out`. Returns the largest step return code.
int checkProgram(ProcessHost& host, const ProgramSource& src, std::ostream& out);

// qvt run: parses and checks every step. Returns the largest step return code.
int runProgram(ProcessHost& host, const ProgramSource& src);

}  // namespace qvt::cli
