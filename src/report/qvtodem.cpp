// "Demands": the intermittent model's results by demand, one row for each
// demand of the fit sample and the hold-out and one for the demand that
// follows them (the forecast).
#include <vector>

#include "intermittent/idmodel.hpp"
#include "report/qvto.hpp"
#include "report/tables.hpp"

namespace qvt {
namespace {

double at(const std::vector<double>& v, long i) noexcept {
  return i >= 0 && static_cast<std::size_t>(i) < v.size() ? v[static_cast<std::size_t>(i)] : kMissing;
}

struct Column {
  const char* name;
  int label;
};

// The five columns of a component's forecast, after its actual value.
constexpr Column kIntervalCols[] = {{"PredictedInterval", 5711}, {"StdInterval", 5712}, {"LowerInterval", 5713},
                                    {"UpperInterval", 5714},     {"ErrorInterval", 5715}};
constexpr Column kSizeCols[] = {{"PredictedSize", 5721}, {"StdSize", 5722}, {"LowerSize", 5723},
                                {"UpperSize", 5724},     {"ErrorSize", 5725}};
constexpr Column kDemandCols[] = {{"Predict", 5731}, {"Std", 5732}, {"Lower", 5733},
                                  {"Upper", 5734},   {"Error", 5735}, {"Stock", 5736}};

// Numbers are shown free in 12 places: sizes may be large or fractional.
constexpr int kWidth = 12;

}  // namespace

void demandCells(const IDMODEL& idm, long i, std::vector<TableCell>* cells) {
  const IDSERIES& ids = *idm.ids;
  const bool croston = idm.modused == kIdmUsedCroston;
  const ESMFOR* parts[] = {&idm.intv.forecast, &idm.size.forecast};
  const IDSCOMP* actual[] = {&ids.intv, &ids.size};
  const auto& r = idm.results;
  const long last = ids.nsample + ids.nholdout;
  cells->clear();
  cells->emplace_back(static_cast<double>(i + 1));
  cells->emplace_back(at(ids.time, i));
  for (int k = 0; k < 2; ++k) {
    const ESMFOR& f = *parts[k];
    cells->emplace_back(at(actual[k]->data, i));
    cells->emplace_back(!croston ? kMissing : i == last ? f.forecast : at(f.predict, i));
    for (const std::vector<double>* v : {&f.std, &f.lower, &f.upper, &f.error})
      cells->emplace_back(croston ? at(*v, i) : kMissing);
  }
  cells->emplace_back(at(ids.adem.data, i));
  for (const std::vector<double>* v : {&r.predict, &r.std, &r.lower, &r.upper, &r.error, &r.stock})
    cells->emplace_back(at(*v, i));
}

void qvtodem(QVTCOM* com, const IDMODEL* idm) {
  if (!com->print.forecasts || idm == nullptr || idm->ids == nullptr) return;
  const IDSERIES& ids = *idm->ids;
  TableOut t(com, "Demands", TableKind::Data, 5700);
  t.col("Index", 5702, ColType::Long, 6, 0);
  const bool id = hasId(*com);
  if (id)
    t.col("DemandTime", 5703, ColType::Double, com->istmt.fmtw1, kColFree, idFormat(*com));
  else
    t.col("DemandTime", 5703, ColType::Double, 8, 0);
  t.col("ActualInterval", 5710, ColType::Double, kWidth);
  for (const Column& c : kIntervalCols) t.col(c.name, c.label, ColType::Double, kWidth);
  t.col("ActualSize", 5720, ColType::Double, kWidth);
  for (const Column& c : kSizeCols) t.col(c.name, c.label, ColType::Double, kWidth);
  t.col("Actual", 5730, ColType::Double, kWidth);
  for (const Column& c : kDemandCols) t.col(c.name, c.label, ColType::Double, kWidth);
  t.endCols();
  t.variable();
  t.value("Base", numText(ids.base));
  t.value("Number", numText(static_cast<double>(ids.n)));
  t.value("Confidence", numText((1 - idm->results.alpha) * 100));

  // The components' own forecasts belong to Croston's method; the average
  // form never fits them, so what they hold is left from the selection and
  // is not shown: its interval and size columns keep the actual values only.
  //
  // The last row is the forecast of the next demand. Its interval and size
  // are the components' forecasts beyond the data, the ones the demand rate
  // is made of (the interval raised to the time already elapsed), so that
  // the row reads as its rate does: predicted size over predicted interval.
  std::vector<TableCell> cells;
  for (long i = 0; i <= ids.nsample + ids.nholdout; ++i) {
    demandCells(*idm, i, &cells);
    t.row(cells);
  }
  t.close();
}

}  // namespace qvt
