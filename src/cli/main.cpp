// The qvt command: qvt run PROGRAM, qvt run -e TEXT, qvt check PROGRAM.
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>

#include "cli/commands.hpp"

namespace {

struct Common {
  std::vector<std::string> libs;
  std::vector<std::string> options;
  std::string log;
  std::string logFormat = "text";
  std::string listing;
  std::string html;
  std::string plots;
  int threads = 1;
  std::size_t memsize = 0;
  bool strict = false;
};

void addCommon(CLI::App* cmd, Common& c) {
  // A repeatable option takes one value each time it is given, so that
  // "qvt run --lib x=dir prog.qvt" leaves prog.qvt to be the program.
  cmd->add_option("--lib", c.libs, "Assign a library: NAME=DIR (CSV files) or NAME=sqlite:FILE.db")
      ->type_name("NAME=PATH")
      ->expected(1)
      ->allow_extra_args(false)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  cmd->add_option("--log", c.log, "Write the log to FILE instead of standard error")->type_name("FILE");
  cmd->add_option("--log-format", c.logFormat, "Log lines as text or as JSON lines")
      ->check(CLI::IsMember({"text", "jsonl"}));
  cmd->add_option("--listing", c.listing, "Write printed tables to FILE instead of standard output")
      ->type_name("FILE");
  cmd->add_option("--html", c.html, "Write an HTML report with tables and plots to FILE")->type_name("FILE");
  cmd->add_option("--plots", c.plots, "Write each plot as an SVG file into DIR")->type_name("DIR");
  cmd->add_option("--option", c.options, "Host option, e.g. DEBUG=SYN or INTERVALDS=\"fiscal=cal.fiscal\"")
      ->type_name("NAME=VALUE")
      ->expected(1)
      ->allow_extra_args(false)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  cmd->add_option("--threads", c.threads, "Threads for BY groups (this version runs them on one thread)")
      ->check(CLI::Range(1, 1024));
  cmd->add_option("--memsize", c.memsize, "Memory budget in bytes (default: the available memory)")
      ->type_name("BYTES")
      ->check(CLI::Validator(
          [](std::string& v) {
            return !v.empty() && v.find_first_not_of("0123456789") == std::string::npos && v != "0" &&
                           v.find_first_not_of('0') != std::string::npos
                       ? std::string()
                       : "give a whole number of bytes above 0, e.g. 500000000";
          },
          "BYTES", "bytes"));
  cmd->add_flag("--strict", c.strict, "Exit with status 1 when a warning was logged");
}

qvt::HostConfig hostConfig(const Common& c) {
  qvt::HostConfig cfg;
  cfg.libs = c.libs;
  cfg.options = c.options;
  cfg.logFile = c.log;
  cfg.logFormat = c.logFormat == "jsonl" ? qvt::LogFormat::Jsonl : qvt::LogFormat::Text;
  cfg.memsize = c.memsize;
  cfg.listingFile = c.listing;
  cfg.htmlFile = c.html;
  cfg.plotsDir = c.plots;
  cfg.strict = c.strict;
  cfg.threads = c.threads;
  // A progress line only where someone watches: standard error on a terminal.
  if (isatty(STDERR_FILENO) != 0) cfg.progressStream = &std::cerr;
  return cfg;
}

}  // namespace

int main(int argc, char** argv) {
  // A reader that goes away (qvt run ... | head) must not kill the run: the
  // listing's write fails instead, which is reported, and the data sets are
  // still written.
  std::signal(SIGPIPE, SIG_IGN);
  CLI::App app{"qvt: automatic time-series forecasting"};
  app.require_subcommand(1);
  app.set_version_flag("--version", "qvt 0.1");

  Common runOpts;
  std::string runFile, runText;
  CLI::App* run = app.add_subcommand("run", "Run the steps of a program");
  run->add_option("PROGRAM", runFile, "Program file")->type_name("FILE");
  run->add_option("-e", runText, "Program text given on the command line")->type_name("TEXT");
  addCommon(run, runOpts);

  Common checkOpts;
  std::string checkFile, checkText;
  CLI::App* check = app.add_subcommand("check", "Parse a program and print its statement records as JSON");
  check->add_option("PROGRAM", checkFile, "Program file")->type_name("FILE");
  check->add_option("-e", checkText, "Program text given on the command line")->type_name("TEXT");
  addCommon(check, checkOpts);

  if (argc > 1 && argv[1][0] != '-' && std::string_view(argv[1]) != "run" && std::string_view(argv[1]) != "check") {
    std::cerr << "qvt: " << argv[1] << " is not a command; the commands are run and check (qvt --help).\n";
    return qvt::cli::kExitUsage;
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp& e) {
    return app.exit(e);
  } catch (const CLI::CallForVersion& e) {
    return app.exit(e);
  } catch (const CLI::ParseError& e) {
    app.exit(e);
    return qvt::cli::kExitUsage;
  }

  const bool isRun = run->parsed();
  const std::string& file = isRun ? runFile : checkFile;
  const std::string& text = isRun ? runText : checkText;
  if (file.empty() == text.empty()) {
    std::cerr << "qvt " << (isRun ? "run" : "check")
              << ": give either a PROGRAM file or -e TEXT (one of them)\n";
    return qvt::cli::kExitUsage;
  }

  qvt::ProcessHost host(hostConfig(isRun ? runOpts : checkOpts));
  if (host.init() != qvt::kHostOk) return qvt::cli::kExitUsage;

  qvt::cli::ProgramSource src{file, text};
  // A program file that can't be read is a mistake on the command line.
  if (qvt::cli::loadProgram(host, src) != 0) return qvt::cli::kExitUsage;
  const int rc = isRun ? qvt::cli::runProgram(host, src) : qvt::cli::checkProgram(host, src, std::cout);
  return host.exitStatus(rc);
}
