#include "output/outcols.hpp"

#include "output/qvtds.hpp"

namespace qvt {

std::string catLabel(const Host& host, int number, std::initializer_list<MsgArg> args) {
  u_slabel l;
  l.len = static_cast<std::int16_t>(hostMsgText(host, l.text, kLabelLen, kMsgProc, number, args));
  return l.str();
}

std::string timeFormat(const QVTCOM& com) {
  const IDSTMT& s = com.istmt;
  if (s.format.empty()) return com.id.format;
  std::string f = s.format.str();
  if (s.fmtw1 > 0) f += std::to_string(s.fmtw1);
  return f + ".";
}

OutColumn numColumn(std::string_view name, int label, const double* cell) {
  OutColumn c;
  c.info.name = std::string(name);
  c.info.type = VarType::Numeric;
  c.info.length = 8;
  c.label = label;
  c.num = cell;
  return c;
}

OutColumn textColumn(std::string_view name, int label, const u_sname* cell) {
  OutColumn c;
  c.info.name = std::string(name);
  c.info.type = VarType::Character;
  c.info.length = kNameLen;
  c.label = label;
  c.text = cell;
  return c;
}

OutColumn timeIdColumn(const QVTCOM& com, const double* cell) {
  OutColumn c = numColumn("_TIMEID_", kLblTimeId, cell);
  if (com.id.dsvarno != 0) {
    c.info.name = com.id.name.str();
    c.info.label = com.id.label.str();
    c.label = 0;
  }
  c.info.format = timeFormat(com);
  return c;
}

std::string inputDisplay(const QVTCOM& com) {
  if (!com.ds.data.display.empty()) return com.ds.data.display.str();
  DsFacts f;
  if (com.host && hostDsInfo(*com.host, com.ds.data.fileid, &f) == 0) return f.display;
  return {};
}

void defineDs(QVTCOM* com, DATASETS& ds, int dsLabel, std::span<const OutColumn> cols) {
  Host& h = *com->host;
  if (com->nby > 0 && com->bylist)
    hostVarPutCv(h, ds.fileid, com->ds.data.fileid,
                 std::span<const int>(com->bylist, static_cast<std::size_t>(com->nby)));
  // A column the host refuses (a BY variable of the same name) has been
  // reported by the host; the others are still defined.
  for (const OutColumn& c : cols) {
    VarInfo info = c.info;
    if (c.label != 0 && info.label.empty()) info.label = catLabel(h, c.label);
    if (c.text) hostVarPutT(h, ds.fileid, info, *c.text);
    else hostVarPutD(h, ds.fileid, info, c.num);
  }
  const std::string label = catLabel(h, dsLabel, {inputDisplay(*com)});
  ds.label.set(label);
  h.dsSetLabel(ds.fileid, label);
  hostVarPutE(h, ds.fileid);
  com->memdef += hostMemDefault(h);
  if (com->memdef != 0) raiseRc(*com, kRcMemory);
}

bool putRow(Host& host, DsHandle ds) {
  return hostRowPut(host, ds) == 0 && hostDsAdd(host, ds) == 0;
}

}  // namespace qvt
