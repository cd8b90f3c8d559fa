#include "host/process_host.hpp"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <utility>

#include "host/csv_engine.hpp"
#include "host/dsname.hpp"
#include "host/format.hpp"
#include "host/host_msgs.hpp"
#include "host/sqlite_engine.hpp"
#include "run/missing.hpp"

namespace qvt {

namespace fs = std::filesystem;

namespace {
// Host messages of the printed output, kept in the report part of the catalogue.
constexpr int kMsgCantListing = 25;  // (file, reason)
constexpr int kMsgCantHtml = 26;     // (file, reason)
constexpr int kMsgCantPlot = 27;     // (file, reason)
constexpr int kMsgListingLost = 29;  // (file)

// The output group that stands for a BY group in the listing and the report.
constexpr std::string_view kByGroupName = "ByGroup";
constexpr std::string_view kHtmlEnd = "</body>\n</html>\n";

// A BY value as a reader knows it: through the variable's format, a
// special missing value as .A, a text without its trailing blanks.
std::string shownValue(const DsRow& row, std::size_t i, const VarInfo& v) {
  if (v.type == VarType::Character) {
    std::string s = row.text[i];
    while (!s.empty() && s.back() == ' ') s.pop_back();
    return s;
  }
  const double x = row.num[i];
  if (wzmis(x)) {
    const char c = missCode(x);
    return c == '.' || c == 0 ? std::string(".") : std::string(".") + c;
  }
  std::string s = v.format.empty() ? renderFormat(x, "BEST", 16) : renderFormat(x, v.format);
  const auto b = s.find_first_not_of(' ');
  return b == std::string::npos ? std::string() : s.substr(b, s.find_last_not_of(' ') - b + 1);
}
}  // namespace

ProcessHost::ProcessHost(HostConfig cfg)
    : cfg_(std::move(cfg)),
      log_(cfg_.logStream ? cfg_.logStream : &std::cerr),
      pools_(cfg_.memsize ? cfg_.memsize : machineAvailableMemory()),
      listing_(cfg_.listingStream ? cfg_.listingStream : &std::cout),
      tables_([this](const Table& t) {
        if (!t.head.hidden) {
          const std::vector<OutputGroup> path = withBy(t.groups);
          listingEnter(path);
          *listing_ << renderListing(t) << std::flush;
          listingUsed_ = true;
          if (!cfg_.htmlFile.empty()) {
            htmlEnter(path);
            html_ += renderHtml(t);
            writeHtml();
          }
        }
        keepGraphs(t);
      }) {
  auto csv = std::make_unique<CsvEngine>();
  csv->bufferBytes = cfg_.csvBufferBytes;
  engines_["csv"] = std::move(csv);
  engines_["sqlite"] = std::make_unique<SqliteEngine>(cfg_.sqliteBusyMs);
  libs_["WORK"] = Library{"WORK", "csv", "."};
}

ProcessHost::~ProcessHost() = default;  // outputs not committed are discarded by their writers

int ProcessHost::init() {
  int rc = 0;
  if (!cfg_.logFile.empty()) {
    logFile_.open(cfg_.logFile, std::ios::out | std::ios::trunc);
    if (logFile_) {
      log_ = &logFile_;
    } else {
      hostMsgLog(*this, kMsgGroupHost, kMsgCantLog, {cfg_.logFile, std::string(std::strerror(errno))});
      rc = kHostBadArgument;
    }
  }
  if (!cfg_.listingFile.empty()) {
    listingFile_.open(cfg_.listingFile, std::ios::out | std::ios::trunc);
    if (listingFile_) {
      listing_ = &listingFile_;
    } else {
      hostMsgLog(*this, kMsgGroupHost, kMsgCantListing,
                 {cfg_.listingFile, std::string(std::strerror(errno))});
      rc = kHostBadArgument;
    }
  }
  if (!cfg_.htmlFile.empty()) {
    // Opened here, so that a path that can't be written is a usage error
    // before any step runs rather than a silent loss at the end.
    htmlFile_.open(cfg_.htmlFile, std::ios::out | std::ios::trunc | std::ios::binary);
    htmlFile_ << "<!DOCTYPE html>\n<html lang=\"en\">\n<head><meta charset=\"utf-8\"><title>qvt report</title></head>\n"
                 "<body>\n";
    htmlEnd_ = htmlFile_.tellp();
    htmlFile_ << kHtmlEnd << std::flush;
    if (!htmlFile_) {
      hostMsgLog(*this, kMsgGroupHost, kMsgCantHtml, {cfg_.htmlFile, std::string(std::strerror(errno))});
      rc = kHostBadArgument;
    }
  }
  if (!cfg_.plotsDir.empty()) {
    // Checked here for the same reason: one message now, not one per plot.
    std::error_code ec;
    if (fs::exists(cfg_.plotsDir, ec) && !fs::is_directory(cfg_.plotsDir, ec)) {
      hostMsgLog(*this, kMsgGroupHost, kMsgCantPlot, {cfg_.plotsDir, std::string("it is not a folder")});
      rc = kHostBadArgument;
    }
  }
  std::map<std::string, std::string> assigned;  // library -> the --lib that assigned it
  for (const std::string& arg : cfg_.libs) {
    const auto eq = arg.find('=');
    const std::string name = eq == std::string::npos ? std::string() : arg.substr(0, eq);
    const std::string value = eq == std::string::npos ? std::string() : arg.substr(eq + 1);
    if (!isPlainName(name, kLibNameLen) || value.empty()) {
      hostMsgLog(*this, kMsgGroupHost, kMsgBadLibAssign, {arg});
      rc = kHostBadArgument;
      continue;
    }
    Library lib{upperAscii(name), "csv", value};
    if (value.rfind("sqlite:", 0) == 0) {
      lib.kind = "sqlite";
      lib.where = value.substr(7);
      if (lib.where.empty()) {
        hostMsgLog(*this, kMsgGroupHost, kMsgBadLibAssign, {arg});
        rc = kHostBadArgument;
        continue;
      }
      DsDiag d;
      if (SqliteEngine::checkLibrary(lib.name, lib.where, cfg_.sqliteBusyMs, d) != 0) {
        logDiag(d);
        rc = kHostBadArgument;
        continue;
      }
    } else {
      std::error_code ec;
      if (!fs::is_directory(value, ec)) {
        if (fs::exists(value, ec)) hostMsgLog(*this, kMsgGroupHost, kMsgLibIsFile, {value, name});
        else hostMsgLog(*this, kMsgGroupHost, kMsgNoFolder, {value, lib.name});
        rc = kHostBadArgument;
        continue;
      }
    }
    if (const auto given = assigned.find(lib.name); given != assigned.end()) {
      hostMsgLog(*this, kMsgGroupHost, kMsgLibTwice, {lib.name, given->second, arg});
      rc = kHostBadArgument;
      continue;
    }
    assigned[lib.name] = arg;
    libs_[lib.name] = lib;
  }
  for (const std::string& arg : cfg_.options) {
    const auto eq = arg.find('=');
    if (eq == std::string::npos || eq == 0) {
      hostMsgLog(*this, kMsgGroupHost, kMsgBadOption, {arg});
      rc = kHostBadArgument;
      continue;
    }
    const std::string name = upperAscii(arg.substr(0, eq));
    if (name != "DEBUG" && name != "INTERVALDS") {
      hostMsgLog(*this, kMsgGroupHost, kMsgUnknownOption, {arg.substr(0, eq)});
      rc = kHostBadArgument;
      continue;
    }
    options_[name] = arg.substr(eq + 1);
  }
  if (cfg_.threads > 1) hostMsgLog(*this, kMsgGroupHost, kMsgThreadsIgnored, {static_cast<long long>(cfg_.threads)});
  return rc;
}

int ProcessHost::exitStatus(int worstRc) const noexcept {
  if (worstRc > 4) return 2;
  if (cfg_.strict && messages(Severity::Warning) > 0) return 1;
  return 0;
}

// --- messages ---------------------------------------------------------------

// A message given inside a BY group names the group: without it, a warning
// about series "units" could be any group's.
void ProcessHost::msgLog(int group, int number, std::span<const MsgArg> args, const SourcePos* at) {
  ++counts_[static_cast<int>(logSeverity(group, number))];
  clearProgress();
  std::string by;
  byGroup(&by, nullptr);
  *log_ << (cfg_.logFormat == LogFormat::Jsonl ? logJsonLine(group, number, args, at, by)
                                               : logTextLine(group, number, args, by))
        << '\n';
  log_->flush();  // a killed run keeps every line it logged
}

void ProcessHost::logDiag(const DsDiag& d) {
  if (d.number != 0) msgLog(kMsgGroupHost, d.number, d.args);
}

void ProcessHost::msgRaw(int result) {
  if (result != 0 && result == lastFailure_ && lastFailureDiag_.number != 0) {
    logDiag(lastFailureDiag_);
  } else {
    hostMsgLog(*this, kMsgGroupHost, kMsgHostCallFailed, {static_cast<long long>(result)});
  }
  lastFailure_ = 0;
  lastFailureDiag_ = DsDiag{};
}

std::optional<std::string> ProcessHost::optionGet(std::string_view name) const {
  const auto it = options_.find(upperAscii(name));
  if (it == options_.end()) return std::nullopt;
  return it->second;
}

// --- data sets --------------------------------------------------------------

ProcessHost::OpenDs* ProcessHost::find(DsHandle ds, DsMode mode) {
  const auto it = ds_.find(ds.id);
  if (it == ds_.end() || it->second->mode != mode) return nullptr;
  if (mode == DsMode::Output && it->second->closed) return nullptr;
  return it->second.get();
}

const ProcessHost::OpenDs* ProcessHost::find(DsHandle ds) const {
  const auto it = ds_.find(ds.id);
  return it == ds_.end() ? nullptr : it->second.get();
}

int ProcessHost::resolve(std::string_view text, DsMode mode, DsLocation* loc, DsEngine** engine) {
  DsName name;
  if (hostNameSplit(text, &name) != 0) {
    hostMsgLog(*this, kMsgGroupHost, kMsgBadDsName, {std::string(text)});
    return kHostBadArgument;
  }
  if (name.quoted) {
    *engine = engines_.at("csv").get();
    loc->lib.clear();
    loc->path = name.path;
    loc->member = fs::path(name.path).stem().string();
    loc->display = name.path;
  } else {
    const std::string libName = name.lib.empty() ? std::string("WORK") : name.lib;
    const auto lib = libs_.find(libName);
    if (lib == libs_.end()) {
      hostMsgLog(*this, kMsgGroupHost, kMsgNoLibrary, {libName, libName + "." + name.member});
      return kHostNotFound;
    }
    const auto eng = engines_.find(lib->second.kind);
    if (eng == engines_.end()) {
      hostMsgLog(*this, kMsgGroupHost, kMsgLibraryKind, {libName, lib->second.kind});
      return kHostUnsupported;
    }
    *engine = eng->second.get();
    *loc = eng->second->locate(libName, lib->second.where, name.member);
  }
  if (mode == DsMode::Input && !(*engine)->exists(*loc)) {
    logDiag((*engine)->missing(*loc));
    return kHostNotFound;
  }
  return 0;
}

int ProcessHost::dsOpen(std::string_view name, DsMode mode, DsHandle* out) {
  if (out) *out = DsHandle{};
  std::string text(name);
  if (mode == DsMode::Input) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string::npos || equalsNoCase(text.substr(first), "_LAST_")) {
      if (!lastOutput_) return kHostNoInput;  // the engine reports "no input" its own way
      text = *lastOutput_;
    }
  }
  auto ds = std::make_unique<OpenDs>();
  ds->mode = mode;
  if (const int r = resolve(text, mode, &ds->loc, &ds->engine); r != 0) return r;
  DsDiag d;
  if (mode == DsMode::Input) {
    std::vector<DsDiag> notes;
    ds->reader = ds->engine->openRead(ds->loc, d, notes);
    for (const DsDiag& n : notes) logDiag(n);
    if (!ds->reader) {
      logDiag(d);
      return kHostDataError;
    }
    ds->vars = ds->reader->vars();
    ds->label = ds->reader->label();
    ds->cursor = std::make_unique<ByCursor>(*ds->reader, ds->loc.display);
  } else {
    // Two outputs of one step under one name: the later would silently
    // replace the earlier when the step ends.
    for (const auto& [id, other] : ds_) {
      const bool same = ds->loc.lib.empty() ? other->loc.path == ds->loc.path
                                            : equalsNoCase(other->loc.lib, ds->loc.lib) &&
                                                  equalsNoCase(other->loc.member, ds->loc.member);
      if (other->mode == DsMode::Output && same) {
        hostMsgLog(*this, kMsgGroupHost, kMsgOutputTwice, {ds->loc.display});
        return kHostBadArgument;
      }
    }
    ds->writer = ds->engine->openWrite(ds->loc, d);
    if (!ds->writer) {
      logDiag(d);
      return kHostIoError;
    }
  }
  const int id = nextDs_++;
  ds_[id] = std::move(ds);
  if (out) *out = DsHandle{id};
  return 0;
}

int ProcessHost::dsClose(DsHandle h) {
  const auto it = ds_.find(h.id);
  if (it == ds_.end()) return kHostBadHandle;
  if (it->second->mode == DsMode::Input) {
    ds_.erase(it);
  } else {
    it->second->closed = true;  // committed or discarded when the step ends
  }
  return 0;
}

std::span<const VarInfo> ProcessHost::dsVars(DsHandle h) const {
  const OpenDs* ds = find(h);
  return ds ? std::span<const VarInfo>(ds->vars) : std::span<const VarInfo>();
}

int ProcessHost::varFind(DsHandle h, std::string_view name) const {
  const OpenDs* ds = find(h);
  if (!ds) return 0;
  for (std::size_t i = 0; i < ds->vars.size(); ++i)
    if (equalsNoCase(ds->vars[i].name, name)) return static_cast<int>(i + 1);
  return 0;
}

int ProcessHost::dsInfo(DsHandle h, DsFacts* out) const {
  const OpenDs* ds = find(h);
  if (!ds || !out) return kHostBadHandle;
  DsFacts f;
  f.nobs = ds->reader ? ds->reader->nobs() : (ds->writer ? ds->writer->records() : -1);
  f.lib = ds->loc.lib;
  f.member = ds->loc.member;
  f.label = ds->label;
  f.display = ds->loc.display;
  f.readable = ds->mode == DsMode::Input;
  // The cursor counts every record it passes, also those of a BY group the
  // engine gave up on, so messages cite the record's number in the file.
  f.rid2n = ds->cursor != nullptr;
  *out = std::move(f);
  return 0;
}

int ProcessHost::dsSetLabel(DsHandle h, std::string_view label) {
  OpenDs* ds = find(h, DsMode::Output);
  if (!ds) return kHostBadHandle;
  ds->label = std::string(label);
  return 0;
}

int ProcessHost::varGetD(DsHandle h, int varno, double* cell) {
  OpenDs* ds = find(h, DsMode::Input);
  if (!ds || !cell) return kHostBadHandle;
  if (varno < 1 || static_cast<std::size_t>(varno) > ds->vars.size()) {
    hostMsgLog(*this, kMsgGroupHost, kMsgNoVariable, {static_cast<long long>(varno), ds->loc.display});
    return kHostNotFound;
  }
  const auto i = static_cast<std::size_t>(varno - 1);
  if (ds->vars[i].type != VarType::Numeric) {
    hostMsgLog(*this, kMsgGroupHost, kMsgCellType, {ds->vars[i].name, ds->loc.display, std::string("character")});
    return kHostBadArgument;
  }
  ds->binds.push_back({i, cell, nullptr});
  return 0;
}

int ProcessHost::varGetT(DsHandle h, int varno, std::string* cell) {
  OpenDs* ds = find(h, DsMode::Input);
  if (!ds || !cell) return kHostBadHandle;
  if (varno < 1 || static_cast<std::size_t>(varno) > ds->vars.size()) {
    hostMsgLog(*this, kMsgGroupHost, kMsgNoVariable, {static_cast<long long>(varno), ds->loc.display});
    return kHostNotFound;
  }
  const auto i = static_cast<std::size_t>(varno - 1);
  if (ds->vars[i].type != VarType::Character) {
    hostMsgLog(*this, kMsgGroupHost, kMsgCellType, {ds->vars[i].name, ds->loc.display, std::string("numeric")});
    return kHostBadArgument;
  }
  ds->binds.push_back({i, nullptr, cell});
  return 0;
}

int ProcessHost::bySet(DsHandle h, std::span<const ByVar> vars, bool notsorted) {
  OpenDs* ds = find(h, DsMode::Input);
  if (!ds) return kHostBadHandle;
  DsDiag d;
  const int r = ds->cursor->setBy(vars, notsorted, d);
  if (r != 0) logDiag(d);
  return r;
}

int ProcessHost::byNext(DsHandle h) {
  OpenDs* ds = find(h, DsMode::Input);
  if (!ds) return kHostBadHandle;
  ds->inRecord = false;
  DsDiag d;
  const int r = ds->cursor->nextGroup(d);
  if (r < 0) logDiag(d);
  return r;
}

int ProcessHost::byGet(DsHandle h) {
  OpenDs* ds = find(h, DsMode::Input);
  if (!ds) return kHostBadHandle;
  DsDiag d;
  const int r = ds->cursor->nextRecord(d);
  ds->inRecord = r == 1;
  if (r < 0) logDiag(d);
  return r;
}

int ProcessHost::rowGet(DsHandle h) {
  OpenDs* ds = find(h, DsMode::Input);
  if (!ds) return kHostBadHandle;
  if (!ds->inRecord) return kHostWrongState;
  const DsRow& row = ds->cursor->current();
  for (const Binding& b : ds->binds) {
    if (b.num) *b.num = row.num[b.var];
    else *b.str = row.text[b.var];
  }
  return 0;
}

long long ProcessHost::dsNote(DsHandle h) const {
  const OpenDs* ds = find(h);
  return ds && ds->cursor ? ds->cursor->currentObs() : 0;
}

int ProcessHost::addColumn(DsHandle h, const VarInfo& info, const OutCol& col) {
  OpenDs* ds = find(h, DsMode::Output);
  if (!ds) return kHostBadHandle;
  if (ds->defined) {
    hostMsgLog(*this, kMsgGroupHost, kMsgLateVariable, {ds->loc.display});
    return kHostWrongState;
  }
  for (const VarInfo& v : ds->vars) {
    if (equalsNoCase(v.name, info.name)) {
      hostMsgLog(*this, kMsgGroupHost, kMsgDupVariable, {info.name, ds->loc.display});
      return kHostBadArgument;
    }
  }
  ds->vars.push_back(info);
  ds->cols.push_back(col);
  return 0;
}

int ProcessHost::varPutD(DsHandle h, const VarInfo& info, const double* cell) {
  if (!cell) return kHostBadArgument;
  VarInfo v = info;
  v.type = VarType::Numeric;
  v.length = 8;
  OutCol c;
  c.src = OutCol::Src::Num;
  c.num = cell;
  return addColumn(h, v, c);
}

int ProcessHost::varPutT(DsHandle h, const VarInfo& info, const std::string* cell) {
  if (!cell) return kHostBadArgument;
  VarInfo v = info;
  v.type = VarType::Character;
  OutCol c;
  c.src = OutCol::Src::Str;
  c.str = cell;
  return addColumn(h, v, c);
}

int ProcessHost::varPutTc(DsHandle h, const VarInfo& info, const std::int16_t* len, const tchar* text) {
  if (!len || !text) return kHostBadArgument;
  VarInfo v = info;
  v.type = VarType::Character;
  OutCol c;
  c.src = OutCol::Src::Tc;
  c.len = len;
  c.text = text;
  return addColumn(h, v, c);
}

int ProcessHost::varPutCv(DsHandle h, DsHandle source, std::span<const int> varnos) {
  const OpenDs* src = find(source);
  if (!src || src->mode != DsMode::Input) return kHostBadHandle;
  for (const int varno : varnos) {
    if (varno < 1 || static_cast<std::size_t>(varno) > src->vars.size()) {
      hostMsgLog(*this, kMsgGroupHost, kMsgNoVariable, {static_cast<long long>(varno), src->loc.display});
      return kHostNotFound;
    }
    OutCol c;
    c.src = OutCol::Src::Copy;
    c.copyDs = source.id;
    c.copyVar = static_cast<std::size_t>(varno - 1);
    if (const int r = addColumn(h, src->vars[c.copyVar], c); r != 0) return r;
  }
  return 0;
}

int ProcessHost::varPutE(DsHandle h) {
  OpenDs* ds = find(h, DsMode::Output);
  if (!ds) return kHostBadHandle;
  if (ds->defined) return 0;
  ds->defined = true;
  ds->row.resize(ds->vars.size());
  DsDiag d;
  if (ds->writer->begin(ds->vars, d) != 0) {
    ds->failed = true;
    logDiag(d);
    return kHostIoError;
  }
  return 0;
}

int ProcessHost::rowPut(DsHandle h) {
  OpenDs* ds = find(h, DsMode::Output);
  if (!ds) return kHostBadHandle;
  if (!ds->defined) return kHostWrongState;
  for (std::size_t i = 0; i < ds->cols.size(); ++i) {
    const OutCol& c = ds->cols[i];
    switch (c.src) {
      case OutCol::Src::Num: ds->row.num[i] = *c.num; break;
      case OutCol::Src::Str: ds->row.text[i] = *c.str; break;
      case OutCol::Src::Tc: {
        // The engine's names are blank-padded to a fixed width; trailing
        // blanks carry no meaning, so they don't reach the file.
        std::size_t n = static_cast<std::size_t>(std::max<std::int16_t>(*c.len, 0));
        while (n > 0 && c.text[n - 1] == ' ') --n;
        ds->row.text[i].assign(c.text, n);
        break;
      }
      case OutCol::Src::Copy: {
        const OpenDs* src = find(DsHandle{c.copyDs});
        if (!src || !src->cursor) {  // the source was closed: its values are gone
          ds->row.num[i] = kMissing;
          ds->row.text[i].clear();
          break;
        }
        const DsRow& r = src->cursor->isByVar(c.copyVar) ? src->cursor->key() : src->cursor->current();
        ds->row.num[i] = r.num[c.copyVar];
        ds->row.text[i] = r.text[c.copyVar];
        break;
      }
    }
  }
  ds->rowTaken = true;
  return 0;
}

int ProcessHost::dsAdd(DsHandle h) {
  OpenDs* ds = find(h, DsMode::Output);
  if (!ds) return kHostBadHandle;
  if (!ds->rowTaken || ds->failed) return kHostWrongState;
  ds->rowTaken = false;
  DsDiag d;
  if (++rowWrites_ == cfg_.failRowWriteAt) {
    d = DsDiag{kMsgRowWriteHook, {ds->loc.display, ds->writer->records() + 1}, Severity::Error};
    ds->failed = true;
    logDiag(d);
    lastFailure_ = kHostIoError;
    return kHostIoError;
  }
  if (ds->writer->append(ds->row, d) != 0) {
    ds->failed = true;
    logDiag(d);
    lastFailure_ = kHostIoError;
    return kHostIoError;
  }
  return 0;
}

// --- memory -----------------------------------------------------------------

PoolHandle ProcessHost::poolCreate(std::size_t, std::size_t, int) {
  // Blocks are taken from the system one by one under the budget, so the
  // initial and block sizes (hints for an arena) change nothing here.
  return PoolHandle{pools_.create()};
}

void* ProcessHost::poolAlloc(PoolHandle pool, std::size_t bytes) {
  Pool* p = pools_.find(pool.id);
  if (!p) {
    pools_.budget().addDeficit(bytes);
    return nullptr;
  }
  return p->alloc(bytes);
}

void ProcessHost::poolFree(PoolHandle pool, void* block, long long) {
  if (Pool* p = pools_.find(pool.id)) p->free(block);
}

void* ProcessHost::realloc(PoolHandle pool, void* block, std::size_t, std::size_t newBytes, int) {
  Pool* p = pools_.find(pool.id);
  if (!p) {
    pools_.budget().addDeficit(newBytes);
    return nullptr;
  }
  return p->realloc(block, newBytes);
}

std::size_t ProcessHost::poolSize() const { return pools_.budget().left(); }

long long ProcessHost::memDefault() { return pools_.budget().takeDeficit(); }

void ProcessHost::memMessage(long long bytes) {
  hostMsgLog(*this, kMsgGroupHost, kMsgOutOfMemory,
             {bytes, static_cast<long long>(pools_.budget().limit())});
}

// --- spools -----------------------------------------------------------------

int ProcessHost::spoolFailure(int msg, const std::string& why) {
  lastFailure_ = kHostSpoolFailed;
  lastFailureDiag_ = DsDiag{msg, {why}};
  return kHostSpoolFailed;
}

int ProcessHost::spoolOpen(SpoolHandle* out) {
  if (out) *out = SpoolHandle{};
  std::string dir = cfg_.tmpDir;
  if (dir.empty()) {
    const char* env = std::getenv("TMPDIR");
    dir = env && *env ? env : "/tmp";
  }
  auto sp = std::make_unique<SpoolFile>();
  if (sp->open(dir) != 0) {
    // The engine ends the step without a word of its own: say why here.
    hostMsgLog(*this, kMsgGroupHost, kMsgSpoolCreate, {dir, sp->error()});
    return kHostSpoolFailed;
  }
  const int id = nextSpool_++;
  spools_[id] = std::move(sp);
  if (out) *out = SpoolHandle{id};
  return 0;
}

int ProcessHost::spoolWrite(SpoolHandle h, const void* data, std::size_t bytes) {
  const auto it = spools_.find(h.id);
  if (it == spools_.end()) return kHostBadHandle;
  ++spoolWrites_;
  if (cfg_.failSpoolWriteAt > 0 && spoolWrites_ == cfg_.failSpoolWriteAt)
    return spoolFailure(kMsgSpoolWrite, "write number " + std::to_string(spoolWrites_) + " was made to fail");
  if (it->second->write(data, bytes) != 0) return spoolFailure(kMsgSpoolWrite, it->second->error());
  return 0;
}

int ProcessHost::spoolRead(SpoolHandle h, void* data, std::size_t bytes) {
  const auto it = spools_.find(h.id);
  if (it == spools_.end()) return kHostBadHandle;
  const int r = it->second->read(data, bytes);
  if (r == 1) {
    lastFailure_ = kHostEof;
    lastFailureDiag_ = DsDiag{kMsgSpoolRead, {std::string("the end of the file came first")}};
    return kHostEof;
  }
  if (r != 0) return spoolFailure(kMsgSpoolRead, it->second->error());
  return 0;
}

int ProcessHost::spoolPoint(SpoolHandle h, long long pos) {
  const auto it = spools_.find(h.id);
  if (it == spools_.end()) return kHostBadHandle;
  if (it->second->point(pos) != 0) return spoolFailure(kMsgSpoolPoint, it->second->error());
  return 0;
}

int ProcessHost::spoolClose(SpoolHandle h, int) {
  const auto it = spools_.find(h.id);
  if (it == spools_.end()) return kHostBadHandle;
  const int r = it->second->close();
  const std::string why = it->second->error();
  spools_.erase(it);
  if (r != 0) return spoolFailure(kMsgSpoolClose, why);
  return 0;
}

// --- the end of a step ------------------------------------------------------

void ProcessHost::clearProgress() {
  if (!progressShown_) return;
  *cfg_.progressStream << "\r\x1b[K" << std::flush;
  progressShown_ = false;
}

void ProcessHost::progress(long long seriesDone) {
  if (!cfg_.progressStream) return;
  using Seconds = std::chrono::duration<double>;
  const auto now = std::chrono::steady_clock::now();
  const double running = Seconds(now - stepStart_).count();
  if (running < cfg_.progressAfter) return;
  if (progressShown_ && Seconds(now - progressShownAt_).count() < cfg_.progressEvery) return;
  const double rate = running > 0 ? static_cast<double>(seriesDone) / running : 0.0;
  char line[96];
  std::snprintf(line, sizeof line, "\r%lld series done, %.0f series/s\x1b[K", seriesDone, rate);
  *cfg_.progressStream << line << std::flush;
  progressShown_ = true;
  progressShownAt_ = now;
}

int ProcessHost::stepEnd(int rc) {
  clearProgress();
  // Whether an output is kept is decided by the engine's rc alone: one
  // output that can't be written doesn't take the others with it.
  const int engineRc = rc;
  // Inputs first: an open reader's lock on a database would stand in the
  // way of an output committed to the same database.
  std::erase_if(ds_, [](const auto& e) { return e.second->mode == DsMode::Input; });
  for (auto& [id, ds] : ds_) {
    if (ds->mode != DsMode::Output) continue;
    // An output that never got a variable was opened but not set up (the
    // engine has said why); a file without columns would only hide an
    // earlier good one.
    if (!ds->defined && ds->vars.empty()) {
      ds->writer->discard();
      continue;
    }
    // A step that failed and wrote no record has nothing to say that an
    // earlier file of the name doesn't say better.
    bool keep = engineRc < 1000 && !ds->failed && (engineRc <= 4 || ds->writer->records() > 0);
    DsDiag d;
    if (keep && !ds->defined && ds->writer->begin(ds->vars, d) != 0) {
      logDiag(d);
      ds->failed = true;
      keep = false;
    }
    if (ds->failed) outputLost_ = true;
    if (!keep) {
      ds->writer->discard();
      if (outputLost_) rc = std::max(rc, kRcOutputLost);
      hostMsgLog(*this, kMsgGroupHost, kMsgDiscarded, {ds->loc.display, static_cast<long long>(rc)});
      continue;
    }
    if (const int c = ds->writer->commit(ds->label, d); c != 0) {
      logDiag(d);
      if (c < 0) {
        outputLost_ = true;
        continue;
      }
    }
    hostMsgLog(*this, kMsgGroupHost, kMsgWritten,
               {ds->loc.display, ds->writer->records(), static_cast<long long>(ds->vars.size())});
    if (ds->loc.lib.empty()) {
      std::string quoted = "'";
      for (const char c : ds->loc.path) {
        if (c == '\'') quoted += '\'';
        quoted += c;
      }
      lastOutput_ = quoted + "'";
    } else {
      lastOutput_ = ds->loc.lib + "." + ds->loc.member;
    }
  }
  ds_.clear();
  spools_.clear();
  pools_.releaseAll();
  tables_.clear();
  flushPlots();
  htmlEnter({});
  writeHtml();
  listingGroups_.clear();
  if (listingUsed_ && !listing_->good()) {
    // Reported once, as the stream stays failed for the rest of the run;
    // every step that printed into it has lost its tables.
    const std::string where = cfg_.listingFile.empty() ? std::string("standard output") : cfg_.listingFile;
    if (!listingLost_) hostMsgLog(*this, kMsgGroupHost, kMsgListingLost, {where});
    listingLost_ = outputLost_ = true;
  }
  listingUsed_ = false;
  if (outputLost_) rc = std::max(rc, kRcOutputLost);
  outputLost_ = false;
  lastFailure_ = 0;
  lastFailureDiag_ = DsDiag{};
  stepStart_ = std::chrono::steady_clock::now();  // the next step's clock
  return rc;
}

// The plots of a series wait for its group's end, so that in the report
// they follow all of its tables; a nested group's opening or closing does
// not let them out early.
int ProcessHost::groupOpen(std::string_view name, std::string_view var, std::string_view label) {
  if (tables_.depth() == 0) flushPlots();
  return tables_.groupOpen(name, var, label);
}
int ProcessHost::groupClose() {
  const int rc = tables_.groupClose();
  if (tables_.depth() == 0) flushPlots();
  return rc;
}

// Brings the report's open sections to the groups `path`: closes those it
// doesn't share with the open ones, then opens the rest, each with its
// label as heading.
void ProcessHost::htmlEnter(const std::vector<OutputGroup>& path) {
  std::size_t common = 0;
  while (common < htmlGroups_.size() && common < path.size() && htmlGroups_[common].name == path[common].name &&
         htmlGroups_[common].label == path[common].label)
    ++common;
  for (std::size_t i = htmlGroups_.size(); i > common; --i) html_ += "</section>\n";
  for (std::size_t i = common; i < path.size(); ++i)
    html_ += "<section class=\"group\" data-name=\"" + htmlEscape(path[i].name) + "\" data-var=\"" +
             htmlEscape(path[i].var) + "\">\n<h2>" + htmlEscape(path[i].label) + "</h2>\n";
  htmlGroups_ = path;
}

// The listing shows a heading for each group it enters: the BY group's
// values underlined with '=', a series' label with '-'.
void ProcessHost::listingEnter(const std::vector<OutputGroup>& path) {
  std::size_t common = 0;
  while (common < listingGroups_.size() && common < path.size() &&
         listingGroups_[common].name == path[common].name && listingGroups_[common].label == path[common].label)
    ++common;
  for (std::size_t i = common; i < path.size(); ++i) {
    const char rule = path[i].name == kByGroupName ? '=' : '-';
    *listing_ << path[i].label << '\n' << std::string(path[i].label.size(), rule) << "\n\n";
  }
  listingGroups_ = path;
}

bool ProcessHost::byGroup(std::string* label, std::string* vars) const {
  for (const auto& [id, ds] : ds_) {
    const ByCursor* c = ds->mode == DsMode::Input ? ds->cursor.get() : nullptr;
    if (!c || !c->hasBy() || !c->keyValid()) continue;
    label->clear();
    if (vars) vars->clear();
    for (const ByVar& b : c->byVars()) {
      const auto i = static_cast<std::size_t>(b.varno - 1);
      const VarInfo& v = ds->vars[i];
      if (vars) *vars += (vars->empty() ? "" : " ") + v.name;
      *label += (label->empty() ? "" : ", ") + v.name + "=" + shownValue(c->key(), i, v);
    }
    return true;
  }
  return false;
}

std::vector<OutputGroup> ProcessHost::withBy(const std::vector<OutputGroup>& groups) const {
  OutputGroup by{std::string(kByGroupName), {}, {}};
  if (!byGroup(&by.label, &by.var)) return groups;
  std::vector<OutputGroup> path{std::move(by)};
  path.insert(path.end(), groups.begin(), groups.end());
  return path;
}

void ProcessHost::flushPlots() {
  for (const auto& [path, figure] : groupPlots_) {
    htmlEnter(path);
    html_ += figure;
  }
  groupPlots_.clear();
  writeHtml();
}
int ProcessHost::graphDraw(TableHandle t, const PlotGraph& graph) { return tables_.graphDraw(t, graph); }

// Each graph goes to the report after the tables of its group, and to a
// file of its own named by BY values, series and plot; a name met again (the
// same series in a later step) gets a number behind it.
void ProcessHost::keepGraphs(const Table& t) {
  constexpr std::size_t kPlotNameMax = 160;  // before the number of a repeat and ".svg"
  if (cfg_.htmlFile.empty() && cfg_.plotsDir.empty()) return;
  std::string series;
  for (const TableValue& v : t.values)
    if (v.name == "Variable") series = v.text;
  for (const PlotGraph& graph : t.graphs) {
    const std::vector<OutputGroup> path = withBy(graph.groups);
    const bool by = !path.empty() && path.front().name == kByGroupName;
    // A plot file is read on its own: its title names the BY group.
    PlotGraph g = graph;
    if (by) g.title += " (" + path.front().label + ")";
    const std::string svg = renderGraphSvg(t, g);
    if (svg.empty()) continue;
    if (!cfg_.htmlFile.empty())
      groupPlots_.emplace_back(path, "<figure class=\"plot\" data-name=\"" + g.name + "\">\n" + svg + "</figure>\n");
    if (cfg_.plotsDir.empty()) continue;
    // Only letters, digits, '-' and single '_' ("region=east, year=2024"
    // becomes region_east_year_2024).
    const auto safe = [](std::string_view text) {
      std::string r;
      for (const char c : text) {
        if (std::isalnum(static_cast<unsigned char>(c)) || c == '-') r += c;
        else if (r.empty() || r.back() != '_') r += '_';
      }
      return r;
    };
    const std::string tail = (series.empty() ? std::string("plot") : series) + "_" + g.name;
    std::string head = by ? safe(path.front().label) : std::string();
    // Long BY values would pass the 255 bytes a file name may have: they are
    // cut, and a hash of the whole (FNV-1a) keeps the name distinct.
    if (by && head.size() + tail.size() > kPlotNameMax) {
      std::uint32_t h = 2166136261u;
      for (const unsigned char c : path.front().label) h = (h ^ c) * 16777619u;
      char hex[9];
      std::snprintf(hex, sizeof hex, "%08x", h);
      head = head.substr(0, kPlotNameMax > tail.size() + 10 ? kPlotNameMax - tail.size() - 10 : 0) + "_" + hex;
    }
    std::string base = safe(head.empty() ? tail : head + "_" + tail);
    const int seen = plotFiles_[base]++;
    if (seen > 0) base += "_" + std::to_string(seen + 1);
    std::error_code ec;
    fs::create_directories(cfg_.plotsDir, ec);  // a folder that cannot be made fails at the write below
    const std::string file = (fs::path(cfg_.plotsDir) / (base + ".svg")).string();
    std::ofstream f(file, std::ios::out | std::ios::trunc);
    f << svg;
    if (!f) {
      hostMsgLog(*this, kMsgGroupHost, kMsgCantPlot, {file, std::string(std::strerror(errno))});
      outputLost_ = true;
    }
  }
}
int ProcessHost::tableOpen(const TableHead& head, TableHandle* out) { return tables_.tableOpen(head, out); }
int ProcessHost::tableColumn(TableHandle t, const TableColumn& col) { return tables_.tableColumn(t, col); }
int ProcessHost::tableColumnsEnd(TableHandle t) { return tables_.tableColumnsEnd(t); }
int ProcessHost::tableValue(TableHandle t, std::string_view name, std::string_view text) {
  return tables_.tableValue(t, name, text);
}
int ProcessHost::tableLine(TableHandle t, const FactoidLine& line) { return tables_.tableLine(t, line); }
int ProcessHost::tableRow(TableHandle t, std::span<const TableCell> cells) {
  return tables_.tableRow(t, cells);
}
int ProcessHost::tableClose(TableHandle t) { return tables_.tableClose(t); }
TableHandle ProcessHost::tableFind(std::string_view name) const { return tables_.tableFind(name); }

void ProcessHost::writeHtml() {
  if (html_.empty() || !htmlFile_.is_open()) return;
  if (htmlFile_) {
    htmlFile_.seekp(htmlEnd_);
    htmlFile_ << html_;
    htmlEnd_ = htmlFile_.tellp();
    htmlFile_ << kHtmlEnd << std::flush;
    if (!htmlFile_) hostMsgLog(*this, kMsgGroupHost, kMsgCantHtml, {cfg_.htmlFile, std::string(std::strerror(errno))});
  }
  // A report that failed once stays failed: every later step lost its part too.
  if (!htmlFile_) outputLost_ = true;
  html_.clear();
}

}  // namespace qvt
