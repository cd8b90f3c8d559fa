#include "cli/commands.hpp"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <ostream>
#include <sstream>

#include <nlohmann/json.hpp>

#include "run/dovqvt.hpp"
#include "statements/parser.hpp"
#include "statements/procstr.hpp"
#include "statements/scanner.hpp"
#include "statements/steps.hpp"
#include "statements/stmt_json.hpp"
#include "statements/varlist.hpp"

namespace qvt::cli {
namespace {

// Fields of the procedure record that hold variable lists, and of a
// FORECAST record; the input data set stands in field 1.
constexpr int kByField = 0;
constexpr int kDataField = 1;
constexpr int kIdField = 3;
constexpr int kForecastVarsField = 1;

enum CliMsg : int {
  kMsgCantReadProgram = 1,  // (file, reason)
  kMsgStepRc = 3,           // (line of the step, rc)
};

struct StepRun {
  PROCSTR records;
  int rc = 0;
};

// Scans the whole program once and parses its steps in order.
std::vector<StepRun> parseSteps(ProcessHost& host, const ProgramSource& src, int* scanRc) {
  Program prog;
  SourcePos origin{src.file, 1, 1};
  *scanRc = scanProgram(src.text, origin, host, prog) != 0 ? 2000 : 0;
  int nerr = 0;
  const std::vector<Step> steps = splitSteps(prog, host, &nerr);
  if (nerr != 0) *scanRc = 2000;
  std::vector<StepRun> runs;
  runs.reserve(steps.size());
  for (const Step& s : steps) {
    StepRun r;
    xsparse(prog, s, host, r.records);
    r.rc = r.records.error;
    runs.push_back(std::move(r));
  }
  return runs;
}

// Resolves the variable lists of a step against its input, when the input
// can be opened. Adds the resolved names to the JSON of each list field.
int resolveStep(ProcessHost& host, const PROCSTR& p, nlohmann::json& j) {
  if (p.head.empty()) return 0;
  const STMT& proc = p.head.front();
  const STLIST* data = proc.field(kDataField);
  std::string name;
  if (data && data->given() && data->mode == StMode::DataSet) {
    const DataSetName& ds = data->dataset();
    name = ds.quoted ? "'" + ds.member + "'" : ds.text;
    if (ds.byDefault) name.clear();
  }
  DsHandle h;
  if (hostDsOpen(host, name, DsMode::Input, &h) != kHostOk) return 1012;
  const std::span<const VarInfo> vars = host.dsVars(h);
  int errors = 0;
  auto resolve = [&](const STMT& st, int field, VarNeed need, nlohmann::json& target) {
    const STLIST* f = st.field(field);
    if (!f || !f->given() || f->mode != StMode::VarList) return;
    std::vector<int> nums;
    errors += resolveVarList(f->vars(), vars, need, host, nums);
    nlohmann::json names = nlohmann::json::array();
    for (int n : nums) names.push_back(vars[static_cast<std::size_t>(n - 1)].name);
    target["resolved"][std::to_string(field)] = names;
  };
  nlohmann::json& recs = j["records"];
  for (std::size_t i = 0; i < p.head.size() && i < recs.size(); ++i) {
    const STMT& st = p.head[i];
    if (i == 0) {
      resolve(st, kByField, VarNeed::Any, recs[i]);
      resolve(st, kIdField, VarNeed::Numeric, recs[i]);
    } else {
      resolve(st, kForecastVarsField, VarNeed::Numeric, recs[i]);
    }
  }
  hostDsClose(host, h);
  return errors ? 2000 : 0;
}

}  // namespace

int loadProgram(ProcessHost& host, ProgramSource& src) {
  if (src.file.empty()) return 0;
  std::error_code ec;
  const auto kind = std::filesystem::status(src.file, ec).type();
  if (kind == std::filesystem::file_type::not_found) {
    hostMsgLog(host, kMsgGroupCli, kMsgCantReadProgram, {src.file, std::string("there is no such file")});
    return 2000;
  }
  if (kind == std::filesystem::file_type::directory) {
    hostMsgLog(host, kMsgGroupCli, kMsgCantReadProgram, {src.file, std::string("it is a folder")});
    return 2000;
  }
  std::ifstream in(src.file, std::ios::binary);
  if (!in) {
    hostMsgLog(host, kMsgGroupCli, kMsgCantReadProgram,
               {src.file, std::string("it cannot be opened (") + std::strerror(errno) + ")"});
    return 2000;
  }
  std::ostringstream ss;
  ss << in.rdbuf();
  if (in.bad()) {
    hostMsgLog(host, kMsgGroupCli, kMsgCantReadProgram, {src.file, std::string("reading failed")});
    return 2000;
  }
  src.text = ss.str();
  return 0;
}

int checkProgram(ProcessHost& host, const ProgramSource& src, std::ostream& out) {
  int worst = 0;
  std::vector<StepRun> runs = parseSteps(host, src, &worst);
  nlohmann::json all = nlohmann::json::array();
  for (StepRun& r : runs) {
    nlohmann::json j = stmtJson(r.records);
    if (r.rc == 0) r.rc = std::max(r.rc, resolveStep(host, r.records, j));
    r.rc = host.stepEnd(r.rc);
    worst = std::max(worst, r.rc);
    all.push_back(std::move(j));
  }
  out << all.dump(2) << '\n';
  return worst;
}

int runProgram(ProcessHost& host, const ProgramSource& src) {
  int worst = 0;
  std::vector<StepRun> runs = parseSteps(host, src, &worst);
  for (StepRun& r : runs) {
    const int line = r.records.head.empty() ? 0 : r.records.head.front().pos.line;
    if (r.rc == 0) {
      // hostRunStep ends the step itself: outputs go into place or are
      // discarded by the step's return code.
      r.rc = hostRunStep(host, [&] { dovqvt(host, r.records); });
    } else {
      r.rc = host.stepEnd(r.rc);
    }
    hostMsgLog(host, kMsgGroupCli, kMsgStepRc, {static_cast<long long>(line), static_cast<long long>(r.rc)});
    worst = std::max(worst, r.rc);
  }
  return worst;
}

}  // namespace qvt::cli
