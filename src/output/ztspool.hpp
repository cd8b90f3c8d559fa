// The series spool: temporary files of doubles and their transposition in
// bounded memory, so that one series at a time is in memory.
#pragma once

#include "host/host.hpp"

namespace qvt {

int ztinit(Host& host, SpoolHandle* one, SpoolHandle* two);
int ztterm(Host& host, SpoolHandle one, SpoolHandle two);
int ztrset(Host& host, SpoolHandle sp);
int ztput(Host& host, SpoolHandle sp, long n, const double* vec);
int ztget(Host& host, SpoolHandle sp, int varno, long nobs, double* vec);
int zttrans(Host& host, SpoolHandle xcin, SpoolHandle xcout, long nrow, long ncol);

// Writes spool rows to a data set through a filter: 0 write, 1 skip, 2 stop.
using ZtFilter = int (*)(void* user, long obs, int nvar, double* vec);
int ztoutp(Host& host, DsHandle ds, SpoolHandle sp, void* user, int nvar, double* vec,
           ZtFilter filter);

}  // namespace qvt
