// Names and labels of the coded options of a FORECAST statement and the ID
// statement: models, criteria, USE=, transformations, accumulations.
//
// One table per code family (code, short name, label message of group 743).
// Everything here is inline so that the output writers and the printed
// tables, which don't link the statement library, name codes by the same
// tables.
#pragma once

#include <span>
#include <string_view>

#include "run/qvtcom.hpp"

namespace qvt {

struct CodeLabel {
  int code;
  std::string_view name;
  int label;  // message number of the label in group 743
};

// MODEL=. Both SEASONAL and ADDSEASONAL write 5, WINTERS and MULTWINTERS 7,
// CROSTON and IDM 20.
inline constexpr CodeLabel kModelLabels[] = {
    {0, "NONE", 1000},      {1, "SIMPLE", 1001},       {2, "LINEAR", 1002},  {3, "DAMPTREND", 1003},
    {4, "DOUBLE", 1004},    {5, "SEASONAL", 1005},     {6, "ADDWINTERS", 1006}, {7, "WINTERS", 1007},
    {8, "BEST", 1020},      {9, "BESTN", 1021},        {10, "BESTS", 1022},  {11, "MULTSEASONAL", 1008},
    {20, "CROSTON", 1030},  {50, "BESTALL", 1050},
};
inline constexpr CodeLabel kModelUnknown = {-1, "UNKNOWN", 1099};

// CRITERION= (SELECT=): the statistics of fit. The label numbers don't
// follow the codes in every block, so each row carries its own.
inline constexpr CodeLabel kCriterionLabels[] = {
    {1, "SSE", 1231},       {2, "MSE", 1232},         {3, "RMSE", 1233},      {4, "UMSE", 1234},
    {5, "URMSE", 1235},     {10, "RSQUARE", 1240},    {11, "ADJ_RSQ", 1241},  {12, "A_ADJ_RSQ", 1242},
    {13, "RW_RSQ", 1243},   {20, "AIC", 1250},        {21, "SBC", 1251},      {22, "APC", 1252},
    {23, "AICC", 1253},     {30, "MINERR", 1260},     {31, "MAXERR", 1261},   {32, "ME", 1262},
    {33, "MAE", 1263},      {40, "MINPE", 1270},      {41, "MAXPE", 1271},    {42, "MPE", 1272},
    {43, "MAPE", 1273},     {44, "MDAPE", 1274},      {45, "GMAPE", 1275},    {50, "MINSPE", 1280},
    {51, "MAXSPE", 1281},   {52, "MSPE", 1282},       {53, "SMAPE", 1283},    {54, "MDASPE", 1284},
    {55, "GMASPE", 1285},   {60, "MINRE", 1290},      {61, "MAXRE", 1291},    {62, "MRE", 1292},
    {63, "MRAE", 1293},     {64, "MDRAE", 1294},      {65, "GMRAE", 1295},    {70, "MINPPE", 1264},
    {71, "MAXPPE", 1265},   {72, "MPPE", 1266},       {73, "MAPPE", 1267},    {74, "MDAPPE", 1268},
    {75, "GMAPPE", 1269},   {80, "MINAPES", 1255},    {81, "MAXAPES", 1256},  {82, "MAPES", 1257},
    {83, "MDAPES", 1258},   {84, "GMAPES", 1259},     {85, "MASE", 1254},
};
inline constexpr CodeLabel kCriterionUnknown = {-1, "UNKNOWN", 1299};

// USE=.
inline constexpr CodeLabel kUseLabels[] = {
    {0, "NONE", 1400}, {1, "PREDICT", 1401}, {2, "LOWER", 1402}, {3, "UPPER", 1403},
};
inline constexpr CodeLabel kUseUnknown = {-1, "UNKNOWN", 1499};

// TRANSFORM=. The names of the fixed transformations are eight characters,
// blank-padded, as the output columns carry them.
inline constexpr CodeLabel kTransformLabels[] = {
    {0, "NONE    ", 1500}, {1, "LOG     ", 1501}, {2, "SQRT    ", 1502},
    {3, "LOGIT   ", 1503}, {4, "BOXCOX  ", 1504}, {10, "AUTO", 1505},
};
inline constexpr CodeLabel kTransformUnknown = {-1, "UNKNOWN", 1599};

// ACCUMULATE=: labels are 1300 + code.
inline constexpr CodeLabel kAccumulateLabels[] = {
    {0, "NONE", 1300},     {1, "TOTAL", 1301},   {2, "AVERAGE", 1302}, {3, "FIRST", 1303},
    {4, "LAST", 1304},     {5, "MINIMUM", 1305}, {6, "MAXIMUM", 1306}, {7, "MEDIAN", 1307},
    {8, "STD", 1308},      {9, "USS", 1309},     {10, "CSS", 1310},    {11, "NOBS", 1311},
    {12, "N", 1312},       {13, "NMISS", 1313},
};
inline constexpr CodeLabel kAccumulateUnknown = {-1, "UNKNOWN", 1350};

// The row of a code, or `unknown`.
constexpr const CodeLabel& codeLabel(std::span<const CodeLabel> table, const CodeLabel& unknown,
                                     int code) noexcept {
  for (const auto& r : table)
    if (r.code == code) return r;
  return unknown;
}

// Fills name and, when not null, label (blank-filled, then the catalogue's
// text) from a row; 0 for a known code, -1 for an unknown one.
inline int qvtpname(QVTCOM* com, std::span<const CodeLabel> table, const CodeLabel& unknown, int code,
                    u_sname* name, u_slabel* label) {
  const CodeLabel& r = codeLabel(table, unknown, code);
  if (name) name->set(r.name);
  if (label) {
    *label = u_slabel();
    label->len = static_cast<std::int16_t>(hostMsgText(*com->host, label->text, kLabelLen, kMsgProc, r.label));
  }
  return r.code < 0 ? -1 : 0;
}

inline int qvtpmdl(QVTCOM* com, int code, u_sname* name, u_slabel* label) {
  return qvtpname(com, kModelLabels, kModelUnknown, code, name, label);
}
inline int qvtpsel(QVTCOM* com, int code, u_sname* name, u_slabel* label) {
  return qvtpname(com, kCriterionLabels, kCriterionUnknown, code, name, label);
}
inline int qvtpuse(QVTCOM* com, int code, u_sname* name, u_slabel* label) {
  return qvtpname(com, kUseLabels, kUseUnknown, code, name, label);
}
inline int qvtptrn(QVTCOM* com, int code, u_sname* name, u_slabel* label) {
  return qvtpname(com, kTransformLabels, kTransformUnknown, code, name, label);
}
inline int qvtpacc(QVTCOM* com, int code, u_sname* name, u_slabel* label) {
  return qvtpname(com, kAccumulateLabels, kAccumulateUnknown, code, name, label);
}

}  // namespace qvt
