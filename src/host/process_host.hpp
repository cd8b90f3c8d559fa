// The host of a process: the command line, end-to-end tests and the test
// programs run the engine inside one of these.
//
// Libraries are folders of CSV files (`--lib NAME=DIR`) or SQLite databases
// (`--lib NAME=sqlite:FILE`); WORK, the default library, is the current
// folder unless `--lib work=...` moves it. The log
// goes to a stream (standard error by default) or a file, as text lines
// ("WARNING: ...") or JSON lines. Everything lives in the object: pools,
// spools, open data sets, outputs waiting for the end of their step.
#pragma once

#include <chrono>
#include <fstream>
#include <iosfwd>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/by_cursor.hpp"
#include "host/dsengine.hpp"
#include "host/host.hpp"
#include "host/log_sink.hpp"
#include "host/output_layer.hpp"
#include "host/pool.hpp"
#include "host/spool.hpp"

namespace qvt {

struct HostConfig {
  // "NAME=DIR", or "NAME=sqlite:FILE", as given on the command line.
  std::vector<std::string> libs;
  // "NAME=VALUE", as given by --option.
  std::vector<std::string> options;
  LogFormat logFormat = LogFormat::Text;
  // The log file (--log); empty: logStream.
  std::string logFile;
  // Where the log goes without a log file; null: standard error.
  std::ostream* logStream = nullptr;
  // Memory budget in bytes (--memsize); 0: the machine's available memory.
  std::size_t memsize = 0;
  // A warning makes the exit status 1 (--strict).
  bool strict = false;
  // Threads asked for BY groups (--threads). BY groups run one after the
  // other; more than one is noted in the log rather than ignored silently.
  int threads = 1;
  // Folder of spool files; empty: $TMPDIR, else /tmp.
  std::string tmpDir;
  // Test hook: the n-th spool write of the host (1-based) fails; 0 never.
  long long failSpoolWriteAt = 0;
  // Test hook: the n-th record added to an output of the host (1-based, over
  // all outputs) fails, and that output is discarded at the step's end; 0 never.
  long long failRowWriteAt = 0;
  // How long a SQLite library waits for another connection's lock, in ms.
  int sqliteBusyMs = 5000;
  // Where the progress line goes (the command line gives standard error when
  // it is a terminal); null: no progress line. It shows once a step has run
  // progressAfter seconds, and changes at most every progressEvery seconds.
  std::ostream* progressStream = nullptr;
  double progressAfter = 2.0;
  double progressEvery = 0.5;
  // The listing of printed tables (--listing); empty: listingStream.
  std::string listingFile;
  // Where the listing goes without a listing file; null: standard output.
  std::ostream* listingStream = nullptr;
  // The HTML report (--html); empty: none. It is rewritten at the end of
  // each step with every table so far, so a later failure keeps the rest.
  std::string htmlFile;
  // A folder for one SVG file per plot (--plots); empty: none. Without it
  // and without htmlFile plots are drawn nowhere.
  std::string plotsDir;
  // Read buffer of CSV files in bytes; tests make it tiny.
  std::size_t csvBufferBytes = std::size_t{1} << 20;
};

class ProcessHost : public Host {
 public:
  explicit ProcessHost(HostConfig cfg);
  ~ProcessHost() override;

  // Checks the configuration (library assignments, options, the log file);
  // each problem is logged. 0, or kHostBadArgument.
  int init();

  // Counts of the messages logged so far, by severity.
  long long messages(Severity s) const noexcept { return counts_[static_cast<int>(s)]; }
  // Exit status of the process for the largest step return code: 2 above 4,
  // else 1 when --strict and a warning was logged, else 0.
  int exitStatus(int worstRc) const noexcept;
  // The data set that an input without DATA= reads: the last output that an
  // earlier step put in place.
  const std::optional<std::string>& lastOutput() const noexcept { return lastOutput_; }
  void setSpoolWriteFailure(long long n) noexcept { cfg_.failSpoolWriteAt = n; }

  void msgLog(int group, int number, std::span<const MsgArg> args, const SourcePos* at = nullptr) override;
  std::optional<std::string> optionGet(std::string_view name) const override;
  void msgRaw(int result) override;

  int dsOpen(std::string_view name, DsMode mode, DsHandle* out) override;
  int dsClose(DsHandle ds) override;
  std::span<const VarInfo> dsVars(DsHandle ds) const override;
  int varFind(DsHandle ds, std::string_view name) const override;
  int dsInfo(DsHandle ds, DsFacts* out) const override;
  int dsSetLabel(DsHandle ds, std::string_view label) override;
  int varGetD(DsHandle ds, int varno, double* cell) override;
  int varGetT(DsHandle ds, int varno, std::string* cell) override;
  int bySet(DsHandle ds, std::span<const ByVar> vars, bool notsorted) override;
  int byNext(DsHandle ds) override;
  int byGet(DsHandle ds) override;
  int rowGet(DsHandle ds) override;
  long long dsNote(DsHandle ds) const override;
  int varPutD(DsHandle ds, const VarInfo& info, const double* cell) override;
  int varPutT(DsHandle ds, const VarInfo& info, const std::string* cell) override;
  int varPutTc(DsHandle ds, const VarInfo& info, const std::int16_t* len, const tchar* text) override;
  int varPutCv(DsHandle ds, DsHandle source, std::span<const int> varnos) override;
  int varPutE(DsHandle ds) override;
  int rowPut(DsHandle ds) override;
  int dsAdd(DsHandle ds) override;

  PoolHandle poolCreate(std::size_t initial, std::size_t block, int flags) override;
  void* poolAlloc(PoolHandle pool, std::size_t bytes) override;
  void poolFree(PoolHandle pool, void* block, long long bytes) override;
  void* realloc(PoolHandle pool, void* block, std::size_t oldBytes, std::size_t newBytes, int flags) override;
  std::size_t poolSize() const override;
  long long memDefault() override;
  void memMessage(long long bytes) override;

  int spoolOpen(SpoolHandle* out) override;
  int spoolWrite(SpoolHandle sp, const void* data, std::size_t bytes) override;
  int spoolRead(SpoolHandle sp, void* data, std::size_t bytes) override;
  int spoolPoint(SpoolHandle sp, long long pos) override;
  int spoolClose(SpoolHandle sp, int mode) override;

  void progress(long long seriesDone) override;
  int stepEnd(int rc) override;

  int groupOpen(std::string_view name, std::string_view var, std::string_view label) override;
  int groupClose() override;
  int tableOpen(const TableHead& head, TableHandle* out) override;
  int tableColumn(TableHandle t, const TableColumn& col) override;
  int tableColumnsEnd(TableHandle t) override;
  int tableValue(TableHandle t, std::string_view name, std::string_view text) override;
  int tableLine(TableHandle t, const FactoidLine& line) override;
  int tableRow(TableHandle t, std::span<const TableCell> cells) override;
  int tableClose(TableHandle t) override;
  TableHandle tableFind(std::string_view name) const override;
  int graphDraw(TableHandle t, const PlotGraph& graph) override;

 private:
  // Clears a progress line that stands on the terminal, so that the next
  // log line starts at the left margin.
  void clearProgress();
  // Writes what the report gained since the last write, and its end.
  void writeHtml();

  struct Library {
    std::string name;  // upper case
    std::string kind;  // "csv" or "sqlite"
    std::string where;
  };
  struct OutCol {
    enum class Src : std::uint8_t { Num, Str, Tc, Copy } src = Src::Num;
    const double* num = nullptr;
    const std::string* str = nullptr;
    const std::int16_t* len = nullptr;
    const tchar* text = nullptr;
    int copyDs = 0;          // Copy: the source data set
    std::size_t copyVar = 0;  // Copy: 0-based variable of the source
  };
  struct Binding {
    std::size_t var;
    double* num;
    std::string* str;
  };
  struct OpenDs {
    DsMode mode = DsMode::Input;
    DsLocation loc;
    DsEngine* engine = nullptr;
    std::vector<VarInfo> vars;
    std::string label;
    // input
    std::unique_ptr<DsReader> reader;
    std::unique_ptr<ByCursor> cursor;
    std::vector<Binding> binds;
    bool inRecord = false;
    // output
    std::unique_ptr<DsWriter> writer;
    std::vector<OutCol> cols;
    DsRow row;
    bool defined = false;
    bool rowTaken = false;
    bool closed = false;
    bool failed = false;
  };

  void logDiag(const DsDiag& d);
  OpenDs* find(DsHandle ds, DsMode mode);
  const OpenDs* find(DsHandle ds) const;
  int resolve(std::string_view name, DsMode mode, DsLocation* loc, DsEngine** engine);
  int addColumn(DsHandle ds, const VarInfo& info, const OutCol& col);
  int spoolFailure(int msg, const std::string& why);

  HostConfig cfg_;
  std::ofstream logFile_;
  std::ostream* log_;
  long long counts_[3] = {0, 0, 0};
  std::map<std::string, Library> libs_;
  std::map<std::string, std::string> options_;  // upper-case name -> value
  std::map<std::string, std::unique_ptr<DsEngine>> engines_;  // by library kind
  std::map<int, std::unique_ptr<OpenDs>> ds_;
  int nextDs_ = 1;
  PoolSet pools_;
  std::map<int, std::unique_ptr<SpoolFile>> spools_;
  int nextSpool_ = 1;
  long long spoolWrites_ = 0;
  long long rowWrites_ = 0;
  int lastFailure_ = 0;          // result code of the last failed spool or record call
  // Set by each output of the step (data set, plot, report, listing) that
  // could not be written; stepEnd then raises the step's rc to kRcOutputLost.
  bool outputLost_ = false;
  bool listingLost_ = false;
  bool listingUsed_ = false;  // the step printed a table
  std::chrono::steady_clock::time_point stepStart_ = std::chrono::steady_clock::now();
  std::chrono::steady_clock::time_point progressShownAt_{};
  bool progressShown_ = false;
  DsDiag lastFailureDiag_;       // and its explanation, for msgRaw
  std::optional<std::string> lastOutput_;
  std::ofstream listingFile_;
  std::ostream* listing_;
  // The report is written as it grows, so that its size never weighs on
  // memory: html_ holds what wasn't written yet, and the file ends with the
  // closing tags after every write, which the next write replaces from
  // htmlEnd_ on; a killed run leaves a complete document.
  std::string html_;
  std::ofstream htmlFile_;
  std::streampos htmlEnd_{};
  std::vector<OutputGroup> htmlGroups_;  // the group sections open at the end of the report
  std::vector<OutputGroup> listingGroups_;  // the groups whose headings the listing has shown
  // The plots of the open output group, each with the groups it was drawn
  // in: they follow the group's tables in the report.
  std::vector<std::pair<std::vector<OutputGroup>, std::string>> groupPlots_;
  void htmlEnter(const std::vector<OutputGroup>& path);
  void listingEnter(const std::vector<OutputGroup>& path);
  // The groups of a table or plot with, outermost, the BY group of the
  // step's input when there is one in hand ("region=east, year=2024").
  std::vector<OutputGroup> withBy(const std::vector<OutputGroup>& groups) const;
  // The BY group in hand ("region=east, store=1") and, when vars isn't
  // null, its variables ("region store"); false outside a BY group.
  bool byGroup(std::string* label, std::string* vars) const;
  void flushPlots();
  std::map<std::string, int> plotFiles_;  // files written under plotsDir, by name
  void keepGraphs(const Table& t);
  OutputLayer tables_;
};

}  // namespace qvt
