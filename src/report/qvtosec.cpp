// "ModelSelection" of the intermittent model: the smoothing candidates of
// one demand component, and the choice between Croston's method and the
// average-demand form.
#include <algorithm>
#include <vector>

#include "intermittent/idmodel.hpp"
#include "report/qvto.hpp"
#include "report/tables.hpp"
#include "statements/qvtpcodes.hpp"
#include "stats/transform.hpp"

namespace qvt {
namespace {

struct Candidate {
  std::string name;
  double criterion;
  bool chosen;
};

// Opens the table, writes the rows and closes it; the component's name is
// handed over only for a component (null: the model as a whole).
void selection(QVTCOM* com, int title, const char* component, int select, const std::vector<Candidate>& rows) {
  int width = 0;
  for (const Candidate& c : rows) width = std::max(width, static_cast<int>(c.name.size()));
  TableOut t(com, "ModelSelection", TableKind::Data, title);
  t.col("Model", 5510, ColType::Text, width);
  t.col("Statistic", 5511, ColType::Double, 10);
  t.col("Selected", 5512, ColType::Text, 8);
  t.endCols();
  t.variable();
  u_sname name;
  u_slabel label;
  qvtpsel(com, select, &name, &label);
  t.value("Select", name.view());
  t.value("SelectLabel", label.view());
  if (component != nullptr) t.value("ComponentName", component);
  const std::string yes = catText(com, 5513);
  for (const Candidate& c : rows) {
    const TableCell row[] = {c.name, c.criterion, c.chosen ? yes : std::string()};
    t.row(row);
  }
  t.close();
}

}  // namespace

void qvtosec(QVTCOM* com, const ESMODEL* esm) {
  if (!com->print.estimates || esm == nullptr || esm->spec == nullptr || esm->orig == nullptr) return;
  const int type = esm->orig->type;
  if (type < kIdsInterval || type > kIdsAverage) return;
  const ESMSPEC& s = *esm->spec;
  // Row 1 of the candidate list is the transformed component. AUTO stands
  // for the log there, as in the component's selection.
  const int trns = s.trnscode == kTrnsAuto ? kTrnsLog : s.trnscode;
  std::vector<Candidate> rows;
  for (int f = 0; f < 2; ++f)
    for (int c = 0; c < 4; ++c) {
      const int m = esm->modellist[f][c];
      if (m == 0) continue;
      u_slabel label;
      idmlabs(*com->host, f == 0 ? 0 : trns, m, 0, &label);
      const bool inForm = f == 0 ? esm->trnsused == 0 : esm->trnsused > 0;
      rows.push_back({label.str(), esm->criterion[f][c], inForm && esm->modused == m});
    }
  // A single candidate was taken without comparison: nothing to show.
  if (rows.size() < 2) return;
  static constexpr const char* kNames[] = {"Interval", "Size", "Average"};
  selection(com, 5505 + type, kNames[type], s.select, rows);
}

void qvtosei(QVTCOM* com, const IDMODEL* idm) {
  if (!com->print.estimates || idm == nullptr) return;
  std::vector<Candidate> rows;
  for (int k = 0; k < 2; ++k) {
    const int form = k == 0 ? kIdmUsedCroston : kIdmUsedAverage;
    u_slabel label;
    idmlabd(*com->host, form, 0, &label);
    rows.push_back({label.str(), idm->criterion[k], idm->modused == form});
  }
  selection(com, 5500, nullptr, idm->spec.select, rows);
}

}  // namespace qvt
