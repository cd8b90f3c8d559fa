#include "calendar/zcintc_host.hpp"

#include <memory>
#include <string>

#include "host/format.hpp"

namespace qvt {
namespace {

constexpr std::string_view kResource = "_ZKJECINTC_";
constexpr int kGroup = 900;
constexpr int kMsgOptionPair = 60;  // a pair of INTERVALDS that can't be read
constexpr int kMsgNoBegin = 61;     // the calendar has no numeric BEGIN
constexpr int kMsgNoRows = 62;      // the calendar has no rows
constexpr int kMsgCharVar = 63;     // END or SEASON is character

// Closes the calendar data set on every way out.
struct Closer {
  Host& host;
  DsHandle ds;
  ~Closer() { host.dsClose(ds); }
};

}  // namespace

int zcintcRead(Host& host, const CUSTOMINTERVAL& ds, CINTC_INFO* into) {
  const std::string name = ds.lib.empty() ? ds.member : ds.lib + "." + ds.member;
  DsHandle h;
  if (host.dsOpen(name, DsMode::Input, &h) != kHostOk || !h) return -1;  // the host named it
  const Closer closer{host, h};
  const std::span<const VarInfo> vars = host.dsVars(h);
  const auto numeric = [&](int varno) {
    return varno > 0 && vars[static_cast<std::size_t>(varno - 1)].type == VarType::Numeric;
  };
  const int vb = host.varFind(h, "BEGIN");
  if (!numeric(vb)) {
    hostMsgLog(host, kGroup, kMsgNoBegin, {name, ds.interval});
    return -1;
  }
  const int ve = host.varFind(h, "END");
  const int vs = host.varFind(h, "SEASON");
  for (const int v : {ve, vs}) {
    if (v > 0 && !numeric(v)) {
      hostMsgLog(host, kGroup, kMsgCharVar, {name, vars[static_cast<std::size_t>(v - 1)].name});
      return -1;
    }
  }

  *into = CINTC_INFO{};
  if (FormatSpec spec; parseFormatSpec(vars[static_cast<std::size_t>(vb - 1)].format, &spec) == kFormatOk) {
    into->fmt = spec.name;
    into->fmt_w = static_cast<short>(spec.width > 0 ? spec.width : -1);
    into->fmt_d = static_cast<short>(spec.width > 0 ? std::max(spec.decimals, 0) : -1);
  }
  double cb = 0, ce = 0, cs = 0;
  int rc = host.varGetD(h, vb, &cb);
  if (rc == kHostOk && ve > 0) {
    rc = host.varGetD(h, ve, &ce);
    into->flags |= kCintcHasEnd;
  }
  if (rc == kHostOk && vs > 0) {
    rc = host.varGetD(h, vs, &cs);
    into->flags |= kCintcHasSeason;
  }
  if (rc != kHostOk) return rc;
  // One BY group: the whole data set, read front to back.
  rc = host.byNext(h);
  while (rc > 0 && (rc = host.byGet(h)) > 0) {
    if ((rc = host.rowGet(h)) != kHostOk) break;
    into->beginBuffer.push_back(cb);
    if (ve > 0) into->endBuffer.push_back(ce);
    if (vs > 0) into->seasBuffer.push_back(cs);
    rc = 1;
  }
  if (rc < 0) return rc;  // the host reported the read failure
  into->n = into->nused = static_cast<long>(into->beginBuffer.size());
  if (into->nused < 1) {
    hostMsgLog(host, kGroup, kMsgNoRows, {name, ds.interval});
    return -2;
  }
  return 0;
}

CINTC_MGR* zcintcMgr(Host& host) {
  if (auto held = host.resGet(kResource)) return static_cast<CINTC_MGR*>(held.get());
  auto mgr = std::make_shared<CINTC_MGR>();
  const std::string option = hostOptionGet(host, "INTERVALDS").value_or("");
  // The loader may hold the host by reference: the manager lives in the
  // host's resources and so never outlives it.
  Host* hp = &host;
  if (zcintcInit(mgr.get(), option, [hp](const CUSTOMINTERVAL& ds, CINTC_INFO* into) {
        return zcintcRead(*hp, ds, into);
      }) != 0)
    hostMsgLog(host, kGroup, kMsgOptionPair, {option});
  CINTC_MGR* raw = mgr.get();
  host.resSet(kResource, std::move(mgr));
  return raw;
}

void zcintcDrop(Host& host) { host.resDelete(kResource); }

}  // namespace qvt
