// The format table, built at compile time from the names of each category
// and the rules of the language and currency families.
//
// What is recorded here: every name with its category, which names have an
// informat row besides the format row (or only an informat row), the
// informat that reads the separator variants of the day-month-year formats,
// and the example output, inverse and informat of a few well-known rows.
// Which names carry an informat row follows from the row totals of each
// category (date 385, curr 225, datetime 120, binary 89, char 86, num 66,
// time 48, smf 8, stat 3) together with the informats a reader of such data
// commonly has; the description numbers and the inverse of most rows are not
// recorded and stay 0. Nothing in the system reads those columns.
#include <algorithm>
#include <array>
#include <span>
#include <string_view>

#include "calendar/zfmt.hpp"

namespace qvt {
namespace {

using sv = std::string_view;

// How many rows a name has.
enum class Rows : unsigned char {
  FormatOnly,      // one 'F' row
  FormatInformat,  // an 'F' row, then an 'I' row
  InformatOnly,    // one 'I' row: readers with no matching writer
};

struct NameEntry {
  char name[kFmtNameSize] = {};
  const char* category = "";
  Rows rows = Rows::FormatOnly;
};

constexpr bool contains(std::span<const sv> list, sv s) {
  return std::find(list.begin(), list.end(), s) != list.end();
}

constexpr bool lessByCode(const char* a, const char* b) {
  for (int i = 0; i < kFmtNameSize; ++i) {
    const auto ca = static_cast<unsigned char>(a[i]);
    const auto cb = static_cast<unsigned char>(b[i]);
    if (ca != cb) return ca < cb;
    if (ca == 0) return false;
  }
  return false;
}

constexpr bool equalName(const char* a, const char* b) {
  return !lessByCode(a, b) && !lessByCode(b, a);
}

// ---------------------------------------------------------------------------
// Families: a prefix or a language code joined with a stem.

constexpr std::array<sv, 23> kLanguages = {
    "AFR", "CAT", "CRO", "CSY", "DAN", "DES", "DEU", "ENG", "ESP", "EUR", "FIN", "FRA",
    "FRS", "HUN", "ITA", "MAC", "NLD", "NOR", "POL", "PTG", "RUS", "SLO", "SVE"};
constexpr std::array<sv, 8> kLanguageDateStems = {"DFDD", "DFDE", "DFDN", "DFDWN",
                                                  "DFMN", "DFMY", "DFWDX", "DFWKX"};
// Stems whose language formats also have an informat: day-month-year and
// month-year text, and the datetime stem.
constexpr std::array<sv, 3> kLanguageInformatStems = {"DFDE", "DFMY", "DFDT"};
constexpr sv kLanguageDatetimeStem = "DFDT";

constexpr std::array<sv, 2> kEuroPrefixes = {"EURFR", "EURTO"};
constexpr std::array<sv, 25> kEuroCurrencies = {
    "ATS", "BEF", "CHF", "CZK", "DEM", "DKK", "ESP", "FIM", "FRF", "GBP", "GRD", "HUF", "IEP",
    "ITL", "LUF", "NLG", "NOK", "PLZ", "PTE", "ROL", "RUR", "SEK", "SIT", "TRL", "YUD"};
constexpr std::array<sv, 2> kLocaleMoneyPrefixes = {"NLMNI", "NLMNL"};
constexpr std::array<sv, 40> kLocaleCurrencies = {
    "AED", "AUD", "BGN", "BRL", "CAD", "CHF", "CNY", "CZK", "DKK", "EEK", "EGP", "EUR", "GBP", "HKD",
    "HRK", "HUF", "IDR", "ILS", "INR", "JPY", "KRW", "LTL", "LVL", "MOP", "MXN", "MYR", "NOK", "NZD",
    "PLN", "ROL", "RUB", "RUR", "SEK", "SGD", "SKK", "THB", "TRY", "TWD", "USD", "ZAR"};

// ---------------------------------------------------------------------------
// Single names by category.

constexpr std::array<sv, 131> kDate = {
    "$ANYDTIF", "$N8601B", "$N8601BA", "$N8601E", "$N8601EA", "$N8601EH", "$N8601EX",
    "$N8601H", "$N8601X", "ANYDTDTE", "B8601CI", "B8601DA", "B8601DJ", "DATE", "DAY", "DDMMYY",
    "DDMMYYB", "DDMMYYC", "DDMMYYD", "DDMMYYN", "DDMMYYP", "DDMMYYS", "DOWNAME", "E8601DA",
    "HDATE", "HEBDATE", "IS8601DA", "JDATEMD", "JDATEMDW", "JDATEMNW", "JDATEMON", "JDATEQRW",
    "JDATEQTR", "JDATESEM", "JDATESMW", "JDATEWK", "JDATEYDW", "JDATEYM", "JDATEYMD",
    "JDATEYMW", "JNENGO", "JNENGOW", "JULDATE", "JULDAY", "JULIAN", "MINGUO", "MMDDYY",
    "MMDDYYB", "MMDDYYC", "MMDDYYD", "MMDDYYN", "MMDDYYP", "MMDDYYS", "MMYY", "MMYYC", "MMYYD",
    "MMYYN", "MMYYP", "MMYYS", "MONNAME", "MONTH", "MONYY", "ND8601DA", "NENGO", "NLDATE",
    "NLDATEL", "NLDATEM", "NLDATEMD", "NLDATEMDL", "NLDATEMDM", "NLDATEMDS", "NLDATEMN",
    "NLDATES", "NLDATEW", "NLDATEWN", "NLDATEYM", "NLDATEYML", "NLDATEYMM", "NLDATEYMS",
    "NLDATEYQ", "NLDATEYQL", "NLDATEYQM", "NLDATEYQS", "NLDATEYR", "NLDATEYW", "QTR", "QTRR",
    "RSTDODB", "RSTDODS", "RSTDOMN", "RSTDOMY", "WEEKDATE", "WEEKDATX", "WEEKDAY", "WEEKU",
    "WEEKV", "WEEKW", "WORDDATE", "WORDDATX", "XYYMMDD", "YEAR", "YYMM", "YYMMC", "YYMMD",
    "YYMMDD", "YYMMDDB", "YYMMDDC", "YYMMDDD", "YYMMDDN", "YYMMDDP", "YYMMDDS", "YYMMN",
    "YYMMP", "YYMMS", "YYMON", "YYQ", "YYQC", "YYQD", "YYQN", "YYQP", "YYQR", "YYQRC", "YYQRD",
    "YYQRN", "YYQRP", "YYQRS", "YYQS", "YYQZ", "YYWEEKU", "YYWEEKV", "YYWEEKW"};
constexpr std::array<sv, 24> kDateWithInformat = {
    "$N8601B", "$N8601E", "B8601CI", "B8601DA", "B8601DJ", "DATE", "DDMMYY", "E8601DA",
    "IS8601DA", "JDATEYMD", "JNENGO", "JULIAN", "MINGUO", "MMDDYY", "MONYY", "ND8601DA",
    "NENGO", "NLDATE", "WEEKU", "WEEKV", "WEEKW", "YYMMDD", "YYMMN", "YYQ"};

constexpr std::array<sv, 32> kTime = {
    "ANYDTTME", "B8601LX", "B8601LZ", "B8601TM", "B8601TX", "B8601TZ", "E8601LX", "E8601LZ",
    "E8601TM", "E8601TX", "E8601TZ", "HHMM", "HHMMSS", "HOUR", "IS8601LZ", "IS8601TM",
    "IS8601TZ", "JTIMEH", "JTIMEHM", "JTIMEHMS", "JTIMEHW", "JTIMEMW", "JTIMESW", "MMSS",
    "ND8601TM", "ND8601TZ", "NLTIMAP", "NLTIME", "STIMER", "TIME", "TIMEAMPM", "TOD"};
constexpr std::array<sv, 16> kTimeWithInformat = {
    "B8601LZ", "B8601TM", "B8601TZ", "E8601LZ", "E8601TM", "E8601TZ", "HHMMSS", "IS8601TM",
    "IS8601TZ", "JTIMEH", "ND8601TM", "ND8601TZ", "NLTIMAP", "NLTIME", "STIMER", "TIME"};

constexpr std::array<sv, 57> kDatetime = {
    "ANYDTDTM", "B8601DN", "B8601DT", "B8601DX", "B8601DZ", "DATEAMPM", "DATETIME", "DTDATE",
    "DTMONYY", "DTWKDATX", "DTYEAR", "DTYYQC", "E8601DN", "E8601DT", "E8601DX", "E8601DZ",
    "IS8601DN", "IS8601DT", "IS8601DZ", "JDATEYT", "JDATEYTW", "JNENGOT", "JNENGOTW", "MDYAMPM",
    "ND8601DN", "ND8601DT", "ND8601DZ", "NLDATM", "NLDATMAP", "NLDATMDT", "NLDATML", "NLDATMM",
    "NLDATMMD", "NLDATMMDL", "NLDATMMDM", "NLDATMMDS", "NLDATMMN", "NLDATMS", "NLDATMTM",
    "NLDATMTZ", "NLDATMW", "NLDATMWN", "NLDATMWZ", "NLDATMYM", "NLDATMYML", "NLDATMYMM",
    "NLDATMYMS", "NLDATMYQ", "NLDATMYQL", "NLDATMYQM", "NLDATMYQS", "NLDATMYR", "NLDATMYW",
    "NLDATMZ", "TWMDY", "UNXEPOCH", "YMDDTTM"};
constexpr std::array<sv, 17> kDatetimeWithInformat = {
    "B8601DN", "B8601DT", "B8601DZ", "DATETIME", "E8601DN", "E8601DT", "E8601DX", "E8601DZ",
    "IS8601DN", "IS8601DT", "IS8601DZ", "MDYAMPM", "ND8601DN", "ND8601DT", "ND8601DZ", "NLDATM",
    "YMDDTTM"};

constexpr std::array<sv, 48> kNum = {
    "BEST", "BESTD", "BESTDOTX", "BESTX", "BINARY", "COMMA", "COMMAX", "D", "E", "F", "FRACT",
    "HEX", "NEGPAREN", "NLBEST", "NLD", "NLNUM", "NLNUMI", "NLPCT", "NLPCTI", "NLPCTN", "NLPCTP",
    "NLPVALUE", "NLSTRMON", "NLSTRQTR", "NLSTRWK", "NUMX", "OCTAL", "ODDSR", "PERCENT",
    "PERCENTN", "PVALUE", "ROMAN", "RSTDOCNY", "RSTDOCYY", "RSTDONYN", "RSTDOPH", "RSTDOPNY",
    "RSTDOPYN", "RSTDOPYY", "RSTDOZP", "SIZEK", "SIZEKB", "SIZEKMG", "SSN", "TRAILSGN", "WORDF",
    "WORDS", "Z"};
constexpr std::array<sv, 18> kNumWithInformat = {
    "BEST", "BINARY", "COMMA", "COMMAX", "E", "F", "HEX", "NLNUM", "NLNUMI", "NLPCT", "NLPCTI",
    "NLPCTN", "NLPCTP", "NUMX", "OCTAL", "PERCENT", "SIZEKMG", "TRAILSGN"};

constexpr std::array<sv, 8> kCurr = {"DOLLAR", "DOLLARX", "EURO", "EUROX",
                                     "NLMNY", "NLMNYI", "RSTDODN", "YEN"};
constexpr std::array<sv, 7> kCurrWithInformat = {"DOLLAR", "DOLLARX", "EURO", "EUROX",
                                                 "NLMNY", "NLMNYI", "YEN"};

constexpr std::array<sv, 3> kStat = {"LOGMATUR", "LOGPROB", "MATURITY"};
constexpr std::array<sv, 8> kSmf = {"MSEC", "PDTIME", "RMFDUR", "RMFSTAMP",
                                    "SHRSTAMP", "SMFSTAMP", "TODSTAMP", "TU"};

constexpr std::array<sv, 49> kBinary = {
    "$ASCII", "$BASE64X", "$BINARY", "$BYVAL", "$CB", "$CHARZB", "$CSTR", "$EBCDIC", "$HEX",
    "$OCTAL", "$PHEX", "BITS", "BZ", "CB", "FLOAT", "IB", "IBR", "IEEE", "IEEER", "MRB", "PCPIB",
    "PD", "PDJULG", "PDJULI", "PIB", "PIBR", "PK", "PUNCH", "RB", "ROW", "S370FF", "S370FHEX",
    "S370FIB", "S370FIBU", "S370FPD", "S370FPDU", "S370FPIB", "S370FRB", "S370FZD", "S370FZDB",
    "S370FZDL", "S370FZDS", "S370FZDT", "S370FZDU", "VAXRB", "VMSZN", "ZD", "ZDB", "ZDV"};
// Binary names with one row: readers of raw fields first, then two writers.
constexpr std::array<sv, 7> kBinaryInformatOnly = {"BITS", "BZ", "CB", "MRB", "PUNCH", "ROW", "ZDV"};
constexpr std::array<sv, 2> kBinaryFormatOnly = {"$BYVAL", "IEEER"};

constexpr std::array<sv, 47> kChar = {
    "$", "$BIDI", "$CHAR", "$CPTDW", "$CPTWD", "$F", "$KANA", "$KANJI", "$KANJIM", "$KANJIX",
    "$KTRUNC", "$LOGVS", "$LOGVSR", "$MSGCASE", "$QUOTE", "$REVERJ", "$REVERS", "$ROMAJI",
    "$DOVNAME", "$UCS2B", "$UCS2BE", "$UCS2L", "$UCS2LE", "$UCS2X", "$UCS2XE", "$UCS4B",
    "$UCS4BE", "$UCS4L", "$UCS4LE", "$UCS4X", "$UCS4XE", "$UESC", "$UESCE", "$UNCR", "$UNCRE",
    "$UPAREN", "$UPARENE", "$UPARENP", "$UPCASE", "$UTF8X", "$UTF8XE", "$VARYING", "$VSLOG",
    "$VSLOGR", "$XMLFXCD", "$XMLFXHC", "$XMLFXHX"};
constexpr std::array<sv, 8> kCharFormatOnly = {"$BIDI",   "$DOVNAME", "$KTRUNC",  "$MSGCASE",
                                               "$ROMAJI", "$XMLFXCD", "$XMLFXHC", "$XMLFXHX"};

// Readers of any date, time or datetime text: informats with no format.
constexpr std::array<sv, 4> kAnyReaders = {"$ANYDTIF", "ANYDTDTE", "ANYDTDTM", "ANYDTTME"};

// ---------------------------------------------------------------------------
// Rows whose other columns are recorded.

struct KnownRow {
  sv name;
  int inverse;
  const char* informat;
  const char* formatted;
};
constexpr std::array<KnownRow, 8> kKnownRows = {{
    {"DATE", 1, " ", "01JAN99"},
    {"DATETIME", 1, " ", "10MAR99:12:34:56"},
    {"DTDATE", 4, " ", "10MAR99"},
    {"MONYY", 1, " ", "JAN99"},
    {"WEEKV", 1, " ", "2003W0103"},
    {"YYQC", 0, " ", "1999:1"},
    {"HHMM", 3, "TIME", "12:35"},
    {"F", 1, " ", "         123"},
}};

// The separator variants (B blank, C colon, D dash, N none, P period, S
// slash) print what their base informat reads.
constexpr const char* variantInformat(sv name) {
  for (const char* base : {"DDMMYY", "MMDDYY", "YYMMDD"}) {
    const sv b(base);
    if (name.size() == b.size() + 1 && name.substr(0, b.size()) == b &&
        sv("BCDNPS").find(name.back()) != sv::npos)
      return base;
  }
  return " ";
}

constexpr int kNameCount = 720;
constexpr int kRowCount = kFmtInfoRows;

constexpr NameEntry makeEntry(sv a, sv b, const char* category, Rows rows) {
  NameEntry e;
  std::size_t k = 0;
  for (char c : a) e.name[k++] = c;
  for (char c : b) e.name[k++] = c;
  e.category = category;
  e.rows = rows;
  return e;
}

struct Builder {
  std::array<NameEntry, kNameCount> names{};
  int n = 0;
  constexpr void add(sv a, sv b, const char* cat, Rows rows) {
    if (n < kNameCount) names[n] = makeEntry(a, b, cat, rows);
    ++n;  // an overflow shows in the count check below
  }
  constexpr void addList(std::span<const sv> list, const char* cat, std::span<const sv> both,
                         std::span<const sv> informatOnly = {}) {
    for (sv s : list) {
      Rows r = Rows::FormatOnly;
      if (contains(both, s)) r = Rows::FormatInformat;
      if (contains(informatOnly, s) || contains(kAnyReaders, s)) r = Rows::InformatOnly;
      add(s, "", cat, r);
    }
  }
};

constexpr Builder collectNames() {
  Builder b;
  for (sv lang : kLanguages) {
    for (sv stem : kLanguageDateStems)
      b.add(lang, stem, "date",
            contains(kLanguageInformatStems, stem) ? Rows::FormatInformat : Rows::FormatOnly);
    b.add(lang, kLanguageDatetimeStem, "datetime", Rows::FormatInformat);
  }
  for (sv p : kEuroPrefixes)
    for (sv c : kEuroCurrencies) b.add(p, c, "curr", Rows::FormatOnly);
  for (sv p : kLocaleMoneyPrefixes)
    for (sv c : kLocaleCurrencies) b.add(p, c, "curr", Rows::FormatInformat);

  b.addList(kDate, "date", kDateWithInformat);
  b.addList(kTime, "time", kTimeWithInformat);
  b.addList(kDatetime, "datetime", kDatetimeWithInformat);
  b.addList(kNum, "num", kNumWithInformat);
  b.addList(kCurr, "curr", kCurrWithInformat);
  b.addList(kStat, "stat", {});
  b.addList(kSmf, "smf", {});
  for (sv s : kBinary) {
    Rows r = Rows::FormatInformat;
    if (contains(kBinaryInformatOnly, s)) r = Rows::InformatOnly;
    if (contains(kBinaryFormatOnly, s)) r = Rows::FormatOnly;
    b.add(s, "", "binary", r);
  }
  for (sv s : kChar)
    b.add(s, "", "char", contains(kCharFormatOnly, s) ? Rows::FormatOnly : Rows::FormatInformat);
  return b;
}

constexpr FMTINFOX makeRow(const NameEntry& e, tchar type) {
  FMTINFOX r{};
  std::copy(e.name, e.name + kFmtNameSize, r.fmtname);
  r.fmttype = type;
  r.inverse = 0;
  r.informat = variantInformat(sv(e.name));
  r.category = e.category;
  r.desc = 0;
  r.formatted = " ";
  if (type == 'F') {
    for (const KnownRow& k : kKnownRows) {
      if (sv(e.name) == k.name) {
        r.inverse = k.inverse;
        r.informat = k.informat;
        r.formatted = k.formatted;
      }
    }
  }
  return r;
}

struct Built {
  std::array<FMTINFOX, kRowCount> rows{};
  int nnames = 0;
  int nrows = 0;
};

constexpr Built buildTable() {
  Builder b = collectNames();
  Built out;
  out.nnames = b.n;
  if (b.n != kNameCount) return out;
  std::sort(b.names.begin(), b.names.end(),
            [](const NameEntry& x, const NameEntry& y) { return lessByCode(x.name, y.name); });
  int k = 0;
  for (const NameEntry& e : b.names) {
    const bool f = e.rows != Rows::InformatOnly;
    const bool i = e.rows != Rows::FormatOnly;
    if (f && k < kRowCount) out.rows[k] = makeRow(e, 'F');
    if (f) ++k;
    if (i && k < kRowCount) out.rows[k] = makeRow(e, 'I');
    if (i) ++k;
  }
  out.nrows = k;
  return out;
}

constexpr Built kBuilt = buildTable();

// The shape of the table is fixed; a wrong list fails the build here.
static_assert(kBuilt.nnames == kNameCount, "the name lists must give 720 names");
static_assert(kBuilt.nrows == kRowCount, "the name lists must give 1030 rows");

constexpr bool sortedAndDistinct() {
  int distinct = 1;
  for (int r = 1; r < kRowCount; ++r) {
    const FMTINFOX& a = kBuilt.rows[r - 1];
    const FMTINFOX& b = kBuilt.rows[r];
    if (equalName(a.fmtname, b.fmtname)) {
      if (a.fmttype != 'F' || b.fmttype != 'I') return false;
      if (sv(a.category) != sv(b.category)) return false;
    } else {
      if (!lessByCode(a.fmtname, b.fmtname)) return false;
      ++distinct;
    }
  }
  return distinct == kNameCount;
}
static_assert(sortedAndDistinct(), "names must be distinct, sorted, F before I");

constexpr int countCategory(sv cat) {
  int c = 0;
  for (const FMTINFOX& r : kBuilt.rows) c += sv(r.category) == cat ? 1 : 0;
  return c;
}
static_assert(countCategory("date") == 385 && countCategory("curr") == 225 &&
                  countCategory("datetime") == 120 && countCategory("binary") == 89 &&
                  countCategory("char") == 86 && countCategory("num") == 66 &&
                  countCategory("time") == 48 && countCategory("smf") == 8 &&
                  countCategory("stat") == 3,
              "rows by category");

}  // namespace

constexpr std::array<FMTINFOX, kFmtInfoRows> fmtinfox = kBuilt.rows;

}  // namespace qvt
