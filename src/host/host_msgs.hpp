// Numbers of the host layer's own messages (catalogue group 900). The texts
// live in catalog.cpp; the arguments each takes are listed beside it.
#pragma once

namespace qvt {

inline constexpr int kMsgGroupHost = 900;

enum HostMsg : int {
  kMsgInternal = 1,            // (what)
  kMsgDsIsFolder = 7,          // (data set, path)
  kMsgUnknownOption = 8,       // (name)
  kMsgLibIsFile = 9,           // (path, lib)
  // data set names and libraries
  kMsgBadDsName = 10,          // (name)
  kMsgNoLibrary = 11,          // (lib, data set)
  kMsgNoDataSet = 12,          // (data set, file)
  kMsgLibTwice = 13,           // (lib, first assignment, second assignment)
  kMsgLibraryKind = 14,        // (lib, kind)
  kMsgBadLibAssign = 15,         // (text)
  kMsgCantOpen = 16,           // (file, reason)
  kMsgCantCreate = 17,         // (data set, folder, reason)
  kMsgCantCommit = 18,         // (data set, file, reason)
  kMsgBadMeta = 19,            // (file, reason)
  kMsgDiscarded = 20,          // (data set, rc)
  kMsgWritten = 21,            // (data set, records, variables)
  kMsgCantLog = 22,            // (file, reason)
  kMsgNoFolder = 23,           // (folder, lib)
  kMsgBadOption = 24,          // (text)
  kMsgThreadsIgnored = 28,     // (threads)
  // CSV files
  kMsgCsvEmpty = 30,           // (file)
  kMsgCsvEmptyName = 31,       // (file, column)
  kMsgCsvDupName = 32,         // (file, column, earlier column, name)
  kMsgCsvLongName = 33,        // (file, column, name)
  kMsgCsvBadUtf8 = 34,         // (file, line, column)
  kMsgCsvRagged = 35,          // (file, line, fields, header fields)
  kMsgCsvOpenQuote = 36,       // (file, line)
  kMsgCsvAfterQuote = 37,      // (file, line, column)
  kMsgCsvNoRecords = 38,       // (file)
  kMsgCsvTypeClash = 39,       // (file, line, column name, cell, kind, side file)
  kMsgCsvReadFailed = 40,      // (file, reason)
  kMsgCsvWriteFailed = 41,     // (data set, file, reason)
  kMsgCsvTurnedText = 42,      // (file, line, variable, cell, kind)
  kMsgCsvNoMeta = 43,          // (data set, side file, reason)
  kMsgCsvStaleMeta = 44,       // (data set, side file, reason)
  kMsgCsvBlankLines = 45,      // (file, count, first line)
  kMsgCsvNotADate = 46,        // (file, line, variable, cell)
  kMsgCsvNotATime = 47,        // (file, line, variable, cell)
  // BY groups and variables
  kMsgByOrder = 50,            // (data set, order, variable, record, value, earlier record, value)
  kMsgNoVariable = 51,         // (variable number, data set)
  kMsgDupVariable = 52,        // (name, data set)
  kMsgLateVariable = 53,       // (data set)
  kMsgCellType = 54,           // (variable, data set, type)
  kMsgNotOpenFor = 55,         // (data set, "input"/"output")
  kMsgOutputTwice = 56,        // (data set)
  // memory
  kMsgOutOfMemory = 70,        // (bytes, budget)
  // spools
  kMsgSpoolCreate = 80,        // (folder, reason)
  kMsgSpoolWrite = 81,         // (reason)
  kMsgSpoolRead = 82,          // (reason)
  kMsgSpoolPoint = 83,         // (reason)
  kMsgSpoolClose = 84,         // (reason)
  kMsgHostCallFailed = 90,     // (result code)
};

}  // namespace qvt
