// Field numbers and flag bits of the statement records as the run reads
// them, and the messages of group 743 that the statements give. The
// numbers are those that the grammar writes (grammar.cpp).
#pragma once

namespace qvt::pf {

// --- procedure record: fields ---
inline constexpr int kBy = 0;           // BY variable list
inline constexpr int kData = 1;         // DATA=
inline constexpr int kOut = 2;          // OUT=
inline constexpr int kIdVar = 3;        // ID variable (a list of one name)
inline constexpr int kInterval = 4;     // ID INTERVAL=
inline constexpr int kAlign = 5;        // ID ALIGN=
inline constexpr int kSeasonality = 6;  // SEASONALITY=
inline constexpr int kLead = 7;         // LEAD=
inline constexpr int kStartSum = 8;     // STARTSUM=
inline constexpr int kAccumulate = 9;   // ACCUMULATE= (ID; FORECAST alike)
inline constexpr int kSetMissCode = 10; // SETMISSING= keyword (ID; FORECAST alike)
inline constexpr int kOutEst = 11;
inline constexpr int kOutFor = 12;
inline constexpr int kOutSum = 13;
inline constexpr int kOutStat = 14;
inline constexpr int kSetMissValue = 15;  // SETMISSING= number (ID; FORECAST alike)
inline constexpr int kOutTrend = 16;
inline constexpr int kOutSeason = 17;
inline constexpr int kStartDate = 18, kStartTime = 19, kStartDatetime = 20;
inline constexpr int kEndDate = 21, kEndTime = 22, kEndDatetime = 23;
inline constexpr int kBack = 24;
inline constexpr int kMaxError = 25;
inline constexpr int kZeroMiss = 26;    // ZEROMISS= (ID; FORECAST alike)
inline constexpr int kOutComp = 27;
inline constexpr int kOutProcInfo = 28;
inline constexpr int kSpecAlpha = 29;   // PLOT=SPECTRUM(ALPHA=)
inline constexpr int kSpecCenter = 30;  // PLOT=SPECTRUM(CENTER=)
inline constexpr int kFormat = 46;      // ID FORMAT=

// --- procedure record: bits ---
inline constexpr int kBitNoOutAll = 1, kBitSortNames = 2, kBitNotSorted = 3;
inline constexpr int kBitPrintDetails = 18, kBitDebug = 19, kBitDebugD = 20, kBitDebugX = 21;

// --- FORECAST record: fields ---
inline constexpr int kFVars = 1;
inline constexpr int kFModel = 2;
inline constexpr int kFCriterion = 3;
inline constexpr int kFAlpha = 4;
inline constexpr int kFUse = 5;
inline constexpr int kFTransform = 6;
inline constexpr int kFBoxCox = 7;
inline constexpr int kFHoldout = 8;
inline constexpr int kFIntermittent = 16;
inline constexpr int kFFirstItem = 17;  // text of the first element of the list
inline constexpr int kFNBackcast = 18;
inline constexpr int kFHoldoutPct = 19;
inline constexpr int kFSigLevel = 20;

// --- FORECAST record: bits ---
inline constexpr int kFBitMedian = 1, kFBitReplaceMissing = 2, kFBitReplaceBack = 3,
                     kFBitSeasonTestNone = 4;

}  // namespace qvt::pf

namespace qvt::pmsg {

// Group 743: the statements into the run.
inline constexpr int kNoInput = 2;             // no DATA= and no earlier output
inline constexpr int kIdInList = 3001;         // (ID name) the ID variable in a FORECAST list
inline constexpr int kNamedTwice = 3002;       // (name) a variable in two lists, or twice in one
inline constexpr int kSeriesLeft = 3003;       // (count) after variables were left out
inline constexpr int kTransformIgnored = 3004; // TRANSFORM= with the intermittent model
inline constexpr int kNoVariables = 3005;      // no FORECAST variable written
inline constexpr int kModelNeedsCycle = 3006;  // (model) a seasonal model without a cycle
inline constexpr int kModelVarsDropped = 3007; // (model) ... its variables aren't forecast
inline constexpr int kNoSeries = 3008;         // no series left to forecast
inline constexpr int kAccWithoutId = 3009;     // ACCUMULATE= in FORECAST without ID statement
inline constexpr int kAccSome = 3010;          // ACCUMULATE= in some FORECAST statements only
inline constexpr int kTrendsNeedAcc = 3011;
inline constexpr int kOutTrendOff = 3012;
inline constexpr int kPrintTrendsOff = 3013;
inline constexpr int kSeasonsNeedCycle = 3014;
inline constexpr int kOutSeasonOff = 3015;
inline constexpr int kPrintSeasonsOff = 3016;
inline constexpr int kStartSumAboveLead = 3017;  // (STARTSUM=)
inline constexpr int kAlphaRaised = 3018;
inline constexpr int kAlphaLowered = 3019;
inline constexpr int kStartTimeUnits = 3020;
inline constexpr int kStartDateUnits = 3021;
inline constexpr int kEndTimeUnits = 3022;
inline constexpr int kEndDateUnits = 3023;
inline constexpr int kEndBeforeStart = 3024;   // (format)
inline constexpr int kFrame = 3025;            // (start, end, periods, format)
inline constexpr int kObsWithStartEnd = 3026;
inline constexpr int kIntermittentIgnored = 3027;  // (model)
inline constexpr int kPlotSeasonsOff = 3028;
inline constexpr int kPlotSeasonsNeedCycle = 3029;
inline constexpr int kPerformanceNeedsBack = 3030;
inline constexpr int kCharFormat = 3091;       // (format)

// Group 773: the LEAD= limit.
inline constexpr int kLeadLimitNote = 101;     // (value, limit)
inline constexpr int kLeadLimitError = 102;    // (value, limit)

}  // namespace qvt::pmsg
