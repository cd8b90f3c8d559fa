// Labels of intermittent models, made of catalogue texts of group 881: a
// component is its transformation and its smoothing form; a model is the
// form's text with its components' labels as arguments.
#include "intermittent/idmodel.hpp"

#include <new>
#include <string>

namespace qvt {
namespace {

constexpr int kGroup = 881;
constexpr int kUnknownModel = 1099;
constexpr int kUnknownTrns = 1599;
constexpr int kCroston = 1031;
constexpr int kAverage = 1032;
constexpr int kBoth = 1050;

// Text of a smoothing form; unknown codes give 1099.
int smoothText(int code) noexcept {
  switch (code) {
    case kIdmSimple: return 1001;
    case kIdmLinear: return 1002;
    case kIdmDampTrend: return 1003;
    case kIdmDouble: return 1004;
    case kIdmBestN: return 1021;
    default: return kUnknownModel;
  }
}

// Text of a transformation: 0 none, unknown codes 1599.
int trnsText(int code) noexcept {
  switch (code) {
    case 0: return 0;
    case 1: case 2: case 3: case 4: return 1500 + code;
    case 10: return 1505;
    default: return kUnknownTrns;
  }
}

void clear(u_slabel* label) noexcept { *label = u_slabel(); }

// A catalogue text with its arguments into label.
void put(const Host& host, int number, std::initializer_list<MsgArg> args, u_slabel* label) {
  label->len = static_cast<std::int16_t>(hostMsgText(host, label->text, kLabelLen, kGroup, number, args));
}

}  // namespace

int idmlabs(const Host& host, int trnscode, int smdlcode, int /*compact*/, u_slabel* label) noexcept {
  if (label == nullptr) return kIdmBadArg;
  clear(label);
  const int t = trnsText(trnscode), s = smoothText(smdlcode);
  try {
    std::string text;
    if (t != 0) text = host.msgText(kGroup, t) + " ";
    text += host.msgText(kGroup, s);
    label->set(text);
  } catch (const std::bad_alloc&) {
    return kIdmNoMem;
  }
  return t == kUnknownTrns || s == kUnknownModel ? kIdmBadArg : kIdmOk;
}

int idmlab(const Host& host, const IDMODEL* idm, int compact, u_slabel* label) noexcept {
  if (idm == nullptr || label == nullptr) return kIdmBadArg;
  clear(label);
  try {
    u_slabel a, b;
    switch (idm->modused) {
      case kIdmUsedCroston: {
        idmlabs(host, idm->intv.trnsused, idm->intv.modused, compact, &a);
        const int rc = idmlabs(host, idm->size.trnsused, idm->size.modused, compact, &b);
        put(host, kCroston, {a.str(), b.str()}, label);
        return rc;
      }
      case kIdmUsedAverage: {
        const int rc = idmlabs(host, idm->adem.trnsused, idm->adem.modused, compact, &a);
        put(host, kAverage, {a.str()}, label);
        return rc;
      }
      case kIdmBoth: put(host, kBoth, {}, label); return kIdmOk;
      default: put(host, kUnknownModel, {}, label); return kIdmBadArg;
    }
  } catch (const std::bad_alloc&) {
    return kIdmNoMem;
  }
}

int idmlabd(const Host& host, int mdlcode, int /*compact*/, u_slabel* label) noexcept {
  if (label == nullptr) return kIdmBadArg;
  clear(label);
  try {
    const int number = mdlcode == 1 ? kCroston : mdlcode == 2 ? kAverage : mdlcode == 20 ? kBoth : kUnknownModel;
    std::string text = host.msgText(kGroup, number);
    // Without a fitted model there are no component labels: the texts of a
    // form keep them in a closing parenthesis, which is left out here.
    if (const auto cut = text.find(" ("); cut != std::string::npos) text.erase(cut);
    label->set(text);
    return number == kUnknownModel ? kIdmBadArg : kIdmOk;
  } catch (const std::bad_alloc&) {
    return kIdmNoMem;
  }
}

}  // namespace qvt
