// The series spool: temporary files of doubles and their transposition in
// bounded memory, so that one series at a time is in memory.
//
// A spool holds doubles without framing. With R records and S series the
// input goes in record-major (R rows of S cells), zttrans turns it
// series-major for the model runs, and the results come back period-major
// for the OUT= data set. Every routine returns 0 for success.
#pragma once

#include "host/host.hpp"

namespace qvt {

// Opens both spools. 1 for a null argument, 2 when the host can't make one.
int ztinit(Host& host, SpoolHandle* one, SpoolHandle* two);
// Closes (and deletes) the first spool, then the second. 1 for a null
// handle, 2 for a failure (then logged; the second stays open when the first
// failed).
int ztterm(Host& host, SpoolHandle one, SpoolHandle two);
// Empties a spool. 1 for a null handle, 2 for a failure.
int ztrset(Host& host, SpoolHandle sp);
// Appends n cells. 1 for bad arguments, 2 for a failed write.
int ztput(Host& host, SpoolHandle sp, long n, const double* vec);
// Reads nobs cells. varno 0 or above first moves to cell varno x nobs (row
// varno of a matrix of rows of nobs cells); -1 reads on from where the last
// read stopped. 2 for bad arguments or a failed read, 1 for a failed move.
int ztget(Host& host, SpoolHandle sp, int varno, long nobs, double* vec);

// Transposes the matrix of nrow rows of ncol cells in xcin into ncol rows of
// nrow cells in xcout; xcin is emptied at the end. 0; 2 when xcin ends
// before nrow rows (a series that put no row); 3 out of memory; 4 a spool
// failure; 5 bad arguments.
int zttrans(Host& host, SpoolHandle xcin, SpoolHandle xcout, long nrow, long ncol);

// Bytes of the matrix that one pass of zttrans holds at most (unless one
// output row is larger).
inline constexpr long kZtPassBytes = 2097152;

// The passes of a transposition: output rows per pass and the number of
// passes. per 0 and passes 0 when nothing can be planned (no rows).
struct ZtPlan {
  long per = 0;
  long passes = 0;
};
// How zttrans splits the output for a pass size of `limit` bytes: the pass
// holds min(all cells, max(limit, one output row)) bytes.
ZtPlan zttplan(long nrow, long ncol, long limit) noexcept;
// zttrans with the pass size as a parameter, so that small data can take
// several passes.
int zttransm(Host& host, SpoolHandle xcin, SpoolHandle xcout, long nrow, long ncol, long limit);

// Writes spool rows to a data set through a filter: 0 write, 1 skip, 2 stop.
using ZtFilter = int (*)(void* user, long obs, int nvar, double* vec);
// Reads the spool from its start, nvar cells a row into vec, and hands each
// row to the filter with its 0-based number. 0 at the end of the spool or
// when the filter stops; 1 when a read fails (logged).
int ztoutp(Host& host, DsHandle ds, SpoolHandle sp, void* user, int nvar, double* vec,
           ZtFilter filter);

}  // namespace qvt
