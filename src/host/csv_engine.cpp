#include "host/csv_engine.hpp"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "host/csv_cell.hpp"
#include "host/csv_scan.hpp"
#include "host/dsname.hpp"
#include "host/host_msgs.hpp"
#include "run/missing.hpp"

namespace qvt {
namespace {

namespace fs = std::filesystem;

DsDiag diag(int number, std::vector<MsgArg> args, Severity s = Severity::Error) {
  return DsDiag{number, std::move(args), s};
}

// What the side file says of one column.
struct MetaVar {
  std::string name;
  std::string label;
  std::string format;
  VarType type = VarType::Numeric;
  int length = 8;
};
struct Meta {
  std::string label;
  std::vector<MetaVar> vars;
  const MetaVar* find(std::string_view name) const {
    for (const MetaVar& v : vars)
      if (equalsNoCase(v.name, name)) return &v;
    return nullptr;
  }
};

// Reads the side file; false with a reason when it is there but unusable.
bool readMeta(const std::string& path, Meta* out, std::string* why) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return true;  // no side file: nothing to apply
  try {
    const nlohmann::json j = nlohmann::json::parse(in);
    Meta m;
    if (j.contains("label")) m.label = j.at("label").get<std::string>();
    if (j.contains("variables")) {
      for (const auto& v : j.at("variables")) {
        MetaVar mv;
        mv.name = v.at("name").get<std::string>();
        if (v.contains("label")) mv.label = v.at("label").get<std::string>();
        if (v.contains("format")) mv.format = v.at("format").get<std::string>();
        if (v.contains("type")) {
          const auto t = v.at("type").get<std::string>();
          if (t == "character") mv.type = VarType::Character;
          else if (t != "numeric") throw std::runtime_error("type " + t + " of " + mv.name);
        }
        if (v.contains("length")) mv.length = v.at("length").get<int>();
        m.vars.push_back(std::move(mv));
      }
    }
    *out = std::move(m);
    return true;
  } catch (const std::exception& e) {
    *why = e.what();
    return false;
  }
}

class CsvReader final : public DsReader {
 public:
  CsvReader(const DsLocation& loc, std::size_t buf) : sc_(buf), file_(loc.path) {}

  int open(DsDiag& d, std::vector<DsDiag>& notes);
  const std::vector<VarInfo>& vars() const override { return vars_; }
  long long nobs() const override { return nobs_; }
  const std::string& label() const override { return label_; }
  int next(DsRow& row, DsDiag& d) override;

 private:
  int scanFailure(int r, DsDiag& d) const;
  int header(DsDiag& d);

  CsvScanner sc_;
  std::string file_;
  std::string metaFile_;
  std::vector<VarInfo> vars_;
  std::vector<CellKind> kinds_;
  std::vector<bool> forced_;  // the side file fixed the kind
  long long nobs_ = 0;
  std::string label_;
};

int CsvReader::scanFailure(int r, DsDiag& d) const {
  if (r == CsvScanner::kOpenQuote) d = diag(kMsgCsvOpenQuote, {file_, sc_.line()});
  else if (r == CsvScanner::kAfterQuote)
    d = diag(kMsgCsvAfterQuote, {file_, sc_.line(), static_cast<long long>(sc_.errorField())});
  else d = diag(kMsgCsvReadFailed, {file_, sc_.ioError()});
  return kHostDataError;
}

int CsvReader::header(DsDiag& d) {
  const int r = sc_.next();
  if (r == 0) {
    d = diag(kMsgCsvEmpty, {file_});
    return kHostDataError;
  }
  if (r < 0) return scanFailure(r, d);
  const auto f = sc_.fields();
  vars_.clear();
  for (std::size_t i = 0; i < f.size(); ++i) {
    const auto col = static_cast<long long>(i + 1);
    const std::string_view name = f[i];
    if (utf8ValidPrefix(name) != name.size()) {
      d = diag(kMsgCsvBadUtf8, {file_, sc_.line(), col});
      return kHostDataError;
    }
    if (name.empty()) {
      d = diag(kMsgCsvEmptyName, {file_, col});
      return kHostDataError;
    }
    if (name.size() > 32) {
      d = diag(kMsgCsvLongName, {file_, col, std::string(name)});
      return kHostDataError;
    }
    for (std::size_t k = 0; k < i; ++k) {
      if (equalsNoCase(vars_[k].name, name)) {
        d = diag(kMsgCsvDupName, {file_, col, static_cast<long long>(k + 1), std::string(name)});
        return kHostDataError;
      }
    }
    VarInfo v;
    v.name = std::string(name);
    vars_.push_back(std::move(v));
  }
  return 0;
}

int CsvReader::open(DsDiag& d, std::vector<DsDiag>& notes) {
  if (sc_.open(file_) != 0) {
    d = diag(kMsgCantOpen, {file_, sc_.ioError()});
    return kHostIoError;
  }
  if (const int r = header(d); r != 0) return r;
  const std::size_t n = vars_.size();
  Meta meta;
  std::string why;
  metaFile_ = CsvEngine::metaPath(file_);
  if (!readMeta(metaFile_, &meta, &why)) {
    notes.push_back(diag(kMsgBadMeta, {metaFile_, why}, Severity::Warning));
    meta = Meta{};
  }
  label_ = meta.label;
  kinds_.assign(n, CellKind::Missing);
  forced_.assign(n, false);
  for (std::size_t i = 0; i < n; ++i) {
    if (const MetaVar* m = meta.find(vars_[i].name)) {
      forced_[i] = true;
      vars_[i].label = m->label;
      vars_[i].format = m->format;
      kinds_[i] = m->type == VarType::Character ? CellKind::Text : csvFormatKind(m->format);
    }
  }
  // First pass: every record checked, every column's kind and width found.
  std::vector<std::size_t> width(n, 0);
  nobs_ = 0;
  for (;;) {
    const int r = sc_.next();
    if (r == 0) break;
    if (r < 0) return scanFailure(r, d);
    const auto f = sc_.fields();
    if (f.size() != n) {
      d = diag(kMsgCsvRagged, {file_, sc_.line(), static_cast<long long>(f.size()), static_cast<long long>(n)});
      return kHostDataError;
    }
    for (std::size_t i = 0; i < n; ++i) {
      const std::string_view c = f[i];
      if (utf8ValidPrefix(c) != c.size()) {
        // The line of the bad byte: the record's first line plus the breaks before it.
        const std::size_t bad = utf8ValidPrefix(c);
        const long long line = sc_.line() + std::count(c.begin(), c.begin() + static_cast<long>(bad), '\n');
        d = diag(kMsgCsvBadUtf8, {file_, line, static_cast<long long>(i + 1)});
        return kHostDataError;
      }
      if (c.size() > width[i]) width[i] = c.size();
      double v = 0;
      if (forced_[i]) {
        if (kinds_[i] != CellKind::Text && !csvParseAs(c, kinds_[i], &v)) {
          d = diag(kMsgCsvTypeClash, {file_, sc_.line(), vars_[i].name, std::string(c),
                                      std::string(kindName(kinds_[i])), metaFile_});
          return kHostDataError;
        }
      } else if (kinds_[i] != CellKind::Text) {
        const CellKind before = kinds_[i];
        const CellKind cell = csvClassify(c, &v);
        kinds_[i] = csvJoinKinds(before, cell);
        // A column of numbers or dates turned character by one cell is
        // mostly a typing slip; say which cell, as the variable is refused
        // later only by its type. A cell of the form of a date that is no
        // day of the calendar is named even as the column's first value.
        const DateFlaw flaw = cell == CellKind::Text ? csvDateFlaw(c) : DateFlaw::None;
        if (flaw != DateFlaw::None)
          notes.push_back(diag(flaw == DateFlaw::Day ? kMsgCsvNotADate : kMsgCsvNotATime,
                               {file_, sc_.line(), vars_[i].name, std::string(c)}, Severity::Note));
        else if (kinds_[i] == CellKind::Text && before != CellKind::Missing)
          notes.push_back(diag(kMsgCsvTurnedText, {file_, sc_.line(), vars_[i].name, std::string(c),
                                                   std::string(kindName(before))},
                               Severity::Note));
      }
    }
    ++nobs_;
  }
  for (std::size_t i = 0; i < n; ++i) {
    VarInfo& v = vars_[i];
    if (kinds_[i] == CellKind::Text) {
      v.type = VarType::Character;
      v.length = static_cast<int>(std::max<std::size_t>(width[i], 1));
      continue;
    }
    if (kinds_[i] == CellKind::Missing) kinds_[i] = CellKind::Number;  // only missing cells
    v.type = VarType::Numeric;
    v.length = 8;
    if (!forced_[i]) {
      if (kinds_[i] == CellKind::Date) v.format = "DATE9.";
      else if (kinds_[i] == CellKind::DateTime) v.format = "DATETIME19.";
      else if (kinds_[i] == CellKind::Time) v.format = "TIME8.";
    }
  }
  if (nobs_ == 0) notes.push_back(diag(kMsgCsvNoRecords, {file_}, Severity::Note));
  if (sc_.blankLines() > 0)
    notes.push_back(diag(kMsgCsvBlankLines, {file_, sc_.blankLines(), sc_.firstBlankLine()}, Severity::Note));
  // Second pass from the first record.
  if (sc_.rewind() != 0 || sc_.next() != 1) {
    d = diag(kMsgCsvReadFailed, {file_, sc_.ioError().empty() ? std::string("the file changed") : sc_.ioError()});
    return kHostIoError;
  }
  return 0;
}

int CsvReader::next(DsRow& row, DsDiag& d) {
  const int r = sc_.next();
  if (r == 0) return 0;
  if (r < 0) return scanFailure(r, d);
  const auto f = sc_.fields();
  const std::size_t n = vars_.size();
  if (f.size() != n) {
    d = diag(kMsgCsvRagged, {file_, sc_.line(), static_cast<long long>(f.size()), static_cast<long long>(n)});
    return kHostDataError;
  }
  if (row.num.size() != n) row.resize(n);
  for (std::size_t i = 0; i < n; ++i) {
    if (kinds_[i] == CellKind::Text) {
      row.text[i].assign(f[i]);
    } else if (!csvParseAs(f[i], kinds_[i], &row.num[i])) {
      // Only when the file changed between the passes, or the side file disagrees.
      d = diag(kMsgCsvTypeClash, {file_, sc_.line(), vars_[i].name, std::string(f[i]),
                                  std::string(kindName(kinds_[i])), metaFile_});
      return kHostDataError;
    }
  }
  return 1;
}

// ---------------------------------------------------------------------------

std::string errnoText() { return std::strerror(errno); }

class CsvWriter final : public DsWriter {
 public:
  CsvWriter(DsLocation loc, unsigned serial) : loc_(std::move(loc)), serial_(serial) {}
  ~CsvWriter() override { discard(); }

  int open(DsDiag& d);
  int begin(const std::vector<VarInfo>& vars, DsDiag& d) override;
  int append(const DsRow& row, DsDiag& d) override;
  int commit(std::string_view label, DsDiag& d) override;
  void discard() noexcept override;
  long long records() const noexcept override { return records_; }

 private:
  int flush(DsDiag& d);

  DsLocation loc_;
  unsigned serial_;
  std::string tmp_, metaTmp_;
  std::FILE* f_ = nullptr;
  std::vector<VarInfo> vars_;
  std::vector<CellKind> kinds_;
  std::string out_;
  long long records_ = 0;
  bool done_ = false;
};

// Beside the target (a rename within one folder is atomic), marked with the
// process and a serial number of the engine so that two outputs never meet.
std::string tempName(const std::string& path, unsigned serial) {
  return path + ".tmp-" + std::to_string(::getpid()) + "-" + std::to_string(serial);
}

// Temporary files of `path` and its side file that a killed run left behind
// (interrupted, or killed by its reader going away): a name of tempName's
// form whose process no longer exists. A process of that number that does
// exist, ours or another's, keeps its files.
void removeOrphans(const std::string& path) {
  const fs::path target(path);
  const fs::path folder = target.parent_path().empty() ? fs::path(".") : target.parent_path();
  const std::string stems[] = {target.filename().string() + ".tmp-",
                               fs::path(CsvEngine::metaPath(path)).filename().string() + ".tmp-"};
  std::error_code ec;
  for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
    const std::string name = it->path().filename().string();
    for (const std::string& stem : stems) {
      if (name.size() <= stem.size() || name.compare(0, stem.size(), stem) != 0) continue;
      const std::string rest = name.substr(stem.size());  // PID-SERIAL
      const auto dash = rest.find('-');
      if (dash == 0 || dash == std::string::npos || rest.find_first_not_of("0123456789-") != std::string::npos)
        continue;
      const long pid = std::strtol(rest.substr(0, dash).c_str(), nullptr, 10);
      if (pid > 0 && pid != ::getpid() && ::kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH) {
        std::error_code rm;
        fs::remove(it->path(), rm);
      }
    }
  }
}

int CsvWriter::open(DsDiag& d) {
  removeOrphans(loc_.path);
  tmp_ = tempName(loc_.path, serial_);
  f_ = std::fopen(tmp_.c_str(), "wb");
  if (!f_) {
    const fs::path folder = fs::path(loc_.path).parent_path();
    d = diag(kMsgCantCreate, {loc_.display, folder.empty() ? std::string(".") : folder.string(), errnoText()});
    return kHostIoError;
  }
  out_.reserve(std::size_t{1} << 20);
  return 0;
}

int CsvWriter::flush(DsDiag& d) {
  if (!out_.empty() && std::fwrite(out_.data(), 1, out_.size(), f_) != out_.size()) {
    d = diag(kMsgCsvWriteFailed, {loc_.display, tmp_, errnoText()});
    return kHostIoError;
  }
  out_.clear();
  return 0;
}

int CsvWriter::begin(const std::vector<VarInfo>& vars, DsDiag& d) {
  vars_ = vars;
  kinds_.clear();
  for (std::size_t i = 0; i < vars_.size(); ++i) {
    if (i) out_ += ',';
    csvAppendText(out_, vars_[i].name);
    kinds_.push_back(vars_[i].type == VarType::Character ? CellKind::Text : csvFormatKind(vars_[i].format));
  }
  out_ += '\n';
  return flush(d);
}

int CsvWriter::append(const DsRow& row, DsDiag& d) {
  const std::size_t n = vars_.size();
  const std::size_t mark = out_.size();
  for (std::size_t i = 0; i < n; ++i) {
    if (i) out_ += ',';
    if (kinds_[i] == CellKind::Text) csvAppendText(out_, row.text[i]);
    else csvAppendNumber(out_, row.num[i], kinds_[i]);
  }
  // A one-column record that is empty would be a blank line, which readers
  // skip: quote it.
  if (out_.size() == mark) out_ += "\"\"";
  out_ += '\n';
  ++records_;
  if (out_.size() >= (std::size_t{1} << 20)) return flush(d);
  return 0;
}

int CsvWriter::commit(std::string_view label, DsDiag& d) {
  if (!f_ || done_) return kHostWrongState;
  if (flush(d) != 0) return kHostIoError;
  if (std::fflush(f_) != 0 || ::fsync(::fileno(f_)) != 0) {
    d = diag(kMsgCsvWriteFailed, {loc_.display, tmp_, errnoText()});
    return kHostIoError;
  }
  std::fclose(f_);
  f_ = nullptr;
  nlohmann::json vars = nlohmann::json::array();
  for (const VarInfo& v : vars_) {
    vars.push_back({{"name", v.name},
                    {"type", v.type == VarType::Character ? "character" : "numeric"},
                    {"length", v.length},
                    {"format", v.format},
                    {"label", v.label}});
  }
  const nlohmann::json meta = {{"member", loc_.member}, {"label", std::string(label)}, {"variables", vars}};
  const std::string metaPath = CsvEngine::metaPath(loc_.path);
  metaTmp_ = tempName(metaPath, serial_);
  {
    std::ofstream m(metaTmp_, std::ios::binary | std::ios::trunc);
    m << meta.dump(1, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
    m.flush();
    if (!m) {
      d = diag(kMsgCsvWriteFailed, {loc_.display, metaTmp_, errnoText()});
      return kHostIoError;
    }
  }
  // The data first: a reader that finds the new data with the old side file
  // still reads it (the side file only refines types); the reverse could not.
  if (std::rename(tmp_.c_str(), loc_.path.c_str()) != 0) {
    d = diag(kMsgCantCommit, {loc_.display, loc_.path, errnoText()});
    return kHostIoError;
  }
  done_ = true;
  if (std::rename(metaTmp_.c_str(), metaPath.c_str()) != 0) {
    // The data is in place; an earlier side file left beside it would lay
    // the old data's types and formats over the new columns.
    const std::string why = errnoText();
    std::remove(metaTmp_.c_str());
    const bool stale = std::remove(metaPath.c_str()) != 0 && errno != ENOENT;
    d = diag(stale ? kMsgCsvStaleMeta : kMsgCsvNoMeta, {loc_.display, metaPath, why}, Severity::Warning);
    return 1;
  }
  return 0;
}

void CsvWriter::discard() noexcept {
  if (f_) {
    std::fclose(f_);
    f_ = nullptr;
  }
  if (!done_) {
    if (!tmp_.empty()) std::remove(tmp_.c_str());
    if (!metaTmp_.empty()) std::remove(metaTmp_.c_str());
  }
  done_ = true;
}

}  // namespace

DsLocation CsvEngine::locate(const std::string& lib, const std::string& where,
                             const std::string& member) const {
  DsLocation loc;
  loc.lib = lib;
  loc.member = member;
  const fs::path dir = where.empty() ? fs::path(".") : fs::path(where);
  loc.path = (dir / (member + ".csv")).string();
  // Member names ignore case, file names don't: take a file that differs
  // only in case when the exact one is absent.
  std::error_code ec;
  if (!fs::exists(loc.path, ec)) {
    for (const auto& ent : fs::directory_iterator(dir, ec)) {
      const std::string fn = ent.path().filename().string();
      if (equalsNoCase(fn, member + ".csv")) {
        loc.path = ent.path().string();
        break;
      }
    }
  }
  loc.display = lib.empty() ? member : lib + "." + member;
  return loc;
}

bool CsvEngine::exists(const DsLocation& loc) const {
  std::error_code ec;
  return fs::is_regular_file(loc.path, ec);
}

DsDiag CsvEngine::missing(const DsLocation& loc) const {
  std::error_code ec;
  if (fs::is_directory(loc.path, ec)) return DsDiag{kMsgDsIsFolder, {loc.display, loc.path}, Severity::Error};
  return DsEngine::missing(loc);
}

std::unique_ptr<DsReader> CsvEngine::openRead(const DsLocation& loc, DsDiag& d,
                                              std::vector<DsDiag>& notes) {
  auto r = std::make_unique<CsvReader>(loc, bufferBytes);
  if (r->open(d, notes) != 0) return nullptr;
  return r;
}

std::unique_ptr<DsWriter> CsvEngine::openWrite(const DsLocation& loc, DsDiag& d) {
  auto w = std::make_unique<CsvWriter>(loc, ++serial_);
  if (w->open(d) != 0) return nullptr;
  return w;
}

}  // namespace qvt
