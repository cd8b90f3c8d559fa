// The sweep operator on a symmetric matrix packed by rows of its lower
// triangle (zisub gives the index). It is the workhorse of the least-squares
// steps: sweeping the rows of a cross-product matrix [X'X X'y; y'X y'y] on
// the pivots of a set S leaves
//   - in (i, last), i in S: the coefficient of column i in the regression of
//     the last column on the columns of S, with its plain sign;
//   - in (last, last): the residual sum of squares of that regression;
//   - in (i, j), i, j in S: minus the inverse of the S block of X'X.
// This is the symmetric form of the operator (A. P. Dempster, Elements of
// Continuous Multivariate Analysis, 1969; J. H. Goodnight, The American
// Statistician 33, 1979), in which a swept diagonal entry turns negative.
#pragma once

namespace qvt {

// Sweeps the packed symmetric matrix a of the given order on pivot k.
// cc holds one mark per pivot, '0' unswept and '1' swept; the caller sets it
// to '0' before the first sweep.
//  - Pivot k unmarked: when a(k, k) > tol the matrix is swept and cc[k]
//    becomes '1' (result 0); otherwise a and cc[k] stay as they are
//    (result 1).
//  - Pivot k already marked: the reverse sweep undoes the earlier one and
//    cc[k] goes back to '0' (result 0), so sweeping a pivot twice restores
//    the matrix; a marked pivot whose entry is 0 (never the case after a
//    sweep) stays (result 1).
// wrk is scratch of order doubles (may be null: then it is not used).
// Result -99 for an impossible argument (order < 1, k outside 0..order-1,
// null a or cc).
int hostSweep(double tol, double* a, int k, int order, char* cc, double* wrk) noexcept;

}  // namespace qvt
