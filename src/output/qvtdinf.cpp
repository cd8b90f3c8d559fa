// OUTPROCINFO=: what the step did, one row per run counter. The writer keeps
// its rows in memory and writes them in one go at the end; it can put BY
// variables and a variable column in front, though this step asks for
// neither.
#include <string>
#include <vector>

#include "output/outcols.hpp"
#include "output/qvtds.hpp"

namespace qvt {

// One row.
struct ZTS_OUTPROCINFODATA {
  u_sname name;
  u_slabel label;
  u_sname var;
  u_sname source;
  u_sname stage;
  double value = 0;
};

// The writer: the cells its columns are bound to and the rows held.
struct ZTS_OUTPROCINFOSTRUCT {
  DsHandle ds;
  Host* host = nullptr;
  ZTS_OUTPROCINFODATA buf;  // nameBuf .. valueBuf
  std::vector<ZTS_OUTPROCINFODATA> obsArray;
};

namespace {

constexpr int kInfoOk = 0, kInfoHost = -1, kInfoArg = -2, kInfoMemory = -3;
constexpr std::size_t kRowsStep = 50;  // room grows by this many rows

// Labels of the columns and the data set live in the run information group.
std::string infoText(const Host& h, int number) { return h.msgText(kMsgRunInfo, number); }

}  // namespace

int ZTSInitOUTPROCINFO(Host* host, DsHandle dataFileid, DsHandle ds, int nby, const int* bylist,
                       int useVar, ZTS_OUTPROCINFOSTRUCT* info) {
  if (host == nullptr || !ds || info == nullptr) return kInfoArg;
  if (nby > 0 && bylist == nullptr) return kInfoArg;
  info->host = host;
  info->ds = ds;
  try {
    info->obsArray.clear();
    info->obsArray.reserve(kRowsStep);
  } catch (...) {
    return kInfoMemory;
  }
  Host& h = *host;
  if (nby > 0 && dataFileid &&
      hostVarPutCv(h, ds, dataFileid, std::span<const int>(bylist, static_cast<std::size_t>(nby))) != 0)
    return kInfoHost;
  const auto text = [&](const char* name, int label, auto* cell) {
    VarInfo v;
    v.name = name;
    v.type = VarType::Character;
    v.length = static_cast<int>(sizeof(cell->text) / sizeof(cell->text[0]));
    v.label = infoText(h, label);
    return hostVarPutT(h, ds, v, *cell);
  };
  int r = 0;
  if (useVar) r |= text("_VAR_", 1606, &info->buf.var);
  r |= text("_SOURCE_", 1604, &info->buf.source);
  r |= text("_NAME_", 1601, &info->buf.name);
  r |= text("_LABEL_", 1602, &info->buf.label);
  r |= text("_STAGE_", 1603, &info->buf.stage);
  VarInfo v;
  v.name = "_VALUE_";
  v.type = VarType::Numeric;
  v.length = 8;
  v.label = infoText(h, 1605);
  r |= hostVarPutD(h, ds, v, &info->buf.value);
  h.dsSetLabel(ds, infoText(h, 1600));
  if (r != 0 || hostVarPutE(h, ds) != 0) return kInfoHost;
  return kInfoOk;
}

int ZTSAddOUTPROCINFOObs(ZTS_OUTPROCINFOSTRUCT* info, const ZTS_OUTPROCINFODATA* row) {
  if (info == nullptr || row == nullptr) return kInfoArg;
  try {
    if (info->obsArray.size() == info->obsArray.capacity())
      info->obsArray.reserve(info->obsArray.size() + kRowsStep);
    info->obsArray.push_back(*row);
  } catch (...) {
    return kInfoMemory;
  }
  return kInfoOk;
}

int ZTSWriteOUTPROCINFO(ZTS_OUTPROCINFOSTRUCT* info) {
  if (info == nullptr || info->host == nullptr) return kInfoArg;
  for (const ZTS_OUTPROCINFODATA& row : info->obsArray) {
    info->buf = row;
    if (!putRow(*info->host, info->ds)) return kInfoHost;
  }
  return kInfoOk;
}

int ZTSResetOUTPROCINFO(ZTS_OUTPROCINFOSTRUCT* info) {
  if (info == nullptr) return kInfoArg;
  info->obsArray.clear();
  return kInfoOk;
}

int ZTSTerminateOUTPROCINFO(ZTS_OUTPROCINFOSTRUCT* info) {
  if (info == nullptr) return kInfoArg;
  *info = ZTS_OUTPROCINFOSTRUCT{};
  return kInfoOk;
}

void qvtdinf(QVTCOM* com) {
  const DsHandle ds = com->ds.outprocinfo.fileid;
  if (!ds) return;
  Host& h = *com->host;
  ZTS_OUTPROCINFOSTRUCT info;
  int r = ZTSInitOUTPROCINFO(&h, DsHandle{}, ds, 0, nullptr, 0, &info);
  ZTS_OUTPROCINFODATA row;
  row.source.set("QVT");
  row.stage.set("ALL");
  const struct {
    const char* name;
    int label;
    long value;
  } counters[] = {{"SERIES", 4701, com->counts.series},
                  {"REQUESTED", 4702, com->counts.requested},
                  {"FAILURES", 4703, com->counts.failures}};
  for (const auto& c : counters) {
    if (r != 0) break;
    row.name.set(c.name);
    row.label.set(catLabel(h, c.label));
    row.value = static_cast<double>(c.value);
    r = ZTSAddOUTPROCINFOObs(&info, &row);
  }
  if (r == 0) r = ZTSWriteOUTPROCINFO(&info);
  ZTSTerminateOUTPROCINFO(&info);
  // The run's return code stays: the forecasts themselves were written.
  if (r != 0) hostMsgLog(h, kMsgProc, kMsgProcInfoFailed);
}

}  // namespace qvt
