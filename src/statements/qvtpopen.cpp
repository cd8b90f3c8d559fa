#include "statements/qvtpopen.hpp"

namespace qvt {

std::string qvtpDsName(const DataSetName& ds) {
  if (ds.byDefault) return {};
  if (!ds.quoted) return ds.text;
  // A quote inside a quoted path is written twice, as in the statement.
  std::string s = "'";
  for (const char c : ds.member) {
    if (c == '\'') s += '\'';
    s += c;
  }
  return s + "'";
}

int qvtpDsOpen(QVTCOM* com, const STLIST& f, DsMode mode, DATASETS* ds) {
  Host& host = *com->host;
  const std::string name = f.mode == StMode::DataSet ? qvtpDsName(f.dataset()) : std::string();
  DsHandle h;
  const int r = hostDsOpen(host, name, mode, &h);
  if (r != kHostOk || !h) return r != kHostOk ? r : kHostBadHandle;
  ds->fileid = h;
  DsFacts facts;
  if (hostDsInfo(host, h, &facts) == kHostOk) {
    ds->lib.set(facts.lib);
    ds->mem.set(facts.member);
    ds->label.set(facts.label);
    ds->display.set(facts.display);
  }
  return kHostOk;
}

}  // namespace qvt
