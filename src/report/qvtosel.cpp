// "ModelSelection" over the smoothing candidates of automatic selection.
#include <algorithm>
#include <vector>

#include "report/qvto.hpp"
#include "report/tables.hpp"
#include "statements/qvtpcodes.hpp"

namespace qvt {

void qvtosel(QVTCOM* com, const int* methods, const int* trnscodes, const double* criteria, int n) {
  if (!com->print.estimates || methods == nullptr || trnscodes == nullptr || criteria == nullptr) return;
  const auto& cur = com->current;
  // A candidate is named by its model's label, and the transformation's
  // label after a comma where it has one.
  std::vector<std::string> names;
  int width = 0;
  for (int i = 0; i < n; ++i) {
    u_slabel model, trns;
    qvtpmdl(com, methods[i], nullptr, &model);
    std::string name = model.str();
    if (trnscodes[i] != kTrnsNone) {
      qvtptrn(com, trnscodes[i], nullptr, &trns);
      name += ", " + trns.str();
    }
    width = std::max(width, static_cast<int>(name.size()));
    names.push_back(std::move(name));
  }
  TableOut t(com, "ModelSelection", TableKind::Data, 5500);
  t.col("Model", 5510, ColType::Text, width);
  t.col("Statistic", 5511, ColType::Double, 10);
  t.col("Selected", 5512, ColType::Text, 8);
  t.endCols();
  t.variable();
  if (cur.varptr != nullptr && cur.varptr->fstmt != nullptr) {
    const auto& sel = cur.varptr->fstmt->select;
    t.value("Select", sel.name.view());
    t.value("SelectLabel", sel.label.view());
  }
  t.value("Rows", numText(n));
  const std::string yes = catText(com, 5513);
  for (int i = 0; i < n; ++i) {
    const bool chosen = methods[i] == cur.modelcode && trnscodes[i] == cur.trnscode;
    const TableCell row[] = {names[i], criteria[i], chosen ? yes : std::string()};
    t.row(row);
  }
  t.close();
}

}  // namespace qvt
