// What a host answers when it doesn't offer a service, and the free
// functions of host.hpp that are more than one call.
#include "host/host.hpp"

#include <algorithm>
#include <new>
#include <stdexcept>

#include "host/catalog.hpp"
#include "host/host_msgs.hpp"

namespace qvt {

std::string Host::msgText(int group, int number, std::span<const MsgArg> args) const {
  const CatalogEntry* e = catalogFind(group, number);
  return e ? catalogFormat(*e, args) : std::string();
}

void Host::msgRaw(int result) {
  const MsgArg a[] = {static_cast<long long>(result)};
  msgLog(kMsgGroupHost, kMsgHostCallFailed, a);
}

std::optional<std::string> Host::optionGet(std::string_view) const { return std::nullopt; }

int Host::dsOpen(std::string_view, DsMode, DsHandle* out) {
  if (out) *out = DsHandle{};
  return kHostUnsupported;
}
int Host::dsClose(DsHandle) { return kHostUnsupported; }
std::span<const VarInfo> Host::dsVars(DsHandle) const { return {}; }
int Host::varFind(DsHandle, std::string_view) const { return 0; }
int Host::dsInfo(DsHandle, DsFacts*) const { return kHostUnsupported; }
int Host::dsSetLabel(DsHandle, std::string_view) { return kHostUnsupported; }
int Host::varGetD(DsHandle, int, double*) { return kHostUnsupported; }
int Host::varGetT(DsHandle, int, std::string*) { return kHostUnsupported; }
int Host::bySet(DsHandle, std::span<const ByVar>, bool) { return kHostUnsupported; }
int Host::byNext(DsHandle) { return kHostUnsupported; }
int Host::byGet(DsHandle) { return kHostUnsupported; }
int Host::rowGet(DsHandle) { return kHostUnsupported; }
long long Host::dsNote(DsHandle) const { return 0; }
int Host::varPutD(DsHandle, const VarInfo&, const double*) { return kHostUnsupported; }
int Host::varPutT(DsHandle, const VarInfo&, const std::string*) { return kHostUnsupported; }
int Host::varPutTc(DsHandle, const VarInfo&, const std::int16_t*, const tchar*) { return kHostUnsupported; }
int Host::varPutCv(DsHandle, DsHandle, std::span<const int>) { return kHostUnsupported; }
int Host::varPutE(DsHandle) { return kHostUnsupported; }
int Host::rowPut(DsHandle) { return kHostUnsupported; }
int Host::dsAdd(DsHandle) { return kHostUnsupported; }

PoolHandle Host::poolCreate(std::size_t, std::size_t, int) { return {}; }
void* Host::poolAlloc(PoolHandle, std::size_t) { return nullptr; }
void Host::poolFree(PoolHandle, void*, long long) {}
void* Host::realloc(PoolHandle, void*, std::size_t, std::size_t, int) { return nullptr; }
std::size_t Host::poolSize() const { return 0; }
long long Host::memDefault() { return 0; }
void Host::memMessage(long long bytes) {
  const MsgArg a[] = {bytes, 0LL};
  msgLog(kMsgGroupHost, kMsgOutOfMemory, a);
}

int Host::spoolOpen(SpoolHandle* out) {
  if (out) *out = SpoolHandle{};
  return kHostUnsupported;
}
int Host::spoolWrite(SpoolHandle, const void*, std::size_t) { return kHostUnsupported; }
int Host::spoolRead(SpoolHandle, void*, std::size_t) { return kHostUnsupported; }
int Host::spoolPoint(SpoolHandle, long long) { return kHostUnsupported; }
int Host::spoolClose(SpoolHandle, int) { return kHostUnsupported; }

int Host::stepEnd(int rc) { return rc; }

std::shared_ptr<void> Host::resGet(std::string_view name) const {
  const std::lock_guard<std::mutex> hold(resLock_);
  const auto it = res_.find(name);
  return it == res_.end() ? nullptr : it->second;
}

void Host::resSet(std::string_view name, std::shared_ptr<void> obj) {
  const std::lock_guard<std::mutex> hold(resLock_);
  res_.insert_or_assign(std::string(name), std::move(obj));
}

void Host::resDelete(std::string_view name) {
  const std::lock_guard<std::mutex> hold(resLock_);
  if (const auto it = res_.find(name); it != res_.end()) res_.erase(it);
}

int Host::groupOpen(std::string_view, std::string_view, std::string_view) { return kHostUnsupported; }
int Host::groupClose() { return kHostUnsupported; }
int Host::tableOpen(const TableHead&, TableHandle* out) {
  if (out) *out = TableHandle{};
  return kHostUnsupported;
}
int Host::tableColumn(TableHandle, const TableColumn&) { return kHostUnsupported; }
int Host::tableColumnsEnd(TableHandle) { return kHostUnsupported; }
int Host::tableValue(TableHandle, std::string_view, std::string_view) { return kHostUnsupported; }
int Host::tableLine(TableHandle, const FactoidLine&) { return kHostUnsupported; }
int Host::tableRow(TableHandle, std::span<const TableCell>) { return kHostUnsupported; }
int Host::tableClose(TableHandle) { return kHostUnsupported; }
TableHandle Host::tableFind(std::string_view) const { return TableHandle{}; }
int Host::graphDraw(TableHandle, const PlotGraph&) { return kHostUnsupported; }
void Host::progress(long long) {}

int hostMsgText(const Host& h, tchar* buf, int size, int group, int number,
                std::initializer_list<MsgArg> args) {
  if (!buf || size <= 0) return 0;
  const std::string t = h.msgText(group, number, std::span<const MsgArg>(args.begin(), args.size()));
  const long n = static_cast<long>(std::min<std::size_t>(t.size(), static_cast<std::size_t>(size)));
  vzmp(t.data(), n, buf, size);
  return static_cast<int>(n);
}

int hostVarName(const Host& h, DsHandle ds, int varno, VarInfo* out) {
  const auto vars = h.dsVars(ds);
  if (varno < 1 || static_cast<std::size_t>(varno) > vars.size()) return kHostNotFound;
  if (out) *out = vars[static_cast<std::size_t>(varno - 1)];
  return kHostOk;
}

void hostExit(Host&, int rc, int) { throw StepExit{rc}; }

int hostByNext(Host& h, DsHandle ds) {
  const int r = h.byNext(ds);
  if (r < 0) hostExit(h, 1012);
  return r;
}

int hostByGet(Host& h, DsHandle ds) {
  const int r = h.byGet(ds);
  if (r < 0) hostExit(h, 1012);
  return r;
}

int hostRunStep(Host& h, const std::function<void()>& body) {
  int rc = 0;
  try {
    body();
  } catch (const StepExit& e) {
    rc = e.rc;
  } catch (const std::bad_alloc&) {
    // The engine's own allocations go through pools and never throw; this is
    // a container of the host or of the runtime that could not grow.
    const MsgArg a[] = {std::string("the C++ runtime could not allocate memory")};
    h.msgLog(kMsgGroupHost, kMsgInternal, a);
    rc = 1016;
  } catch (const std::exception& e) {
    const MsgArg a[] = {std::string(e.what())};
    h.msgLog(kMsgGroupHost, kMsgInternal, a);
    rc = 2000;
  }
  return h.stepEnd(rc);
}

}  // namespace qvt
