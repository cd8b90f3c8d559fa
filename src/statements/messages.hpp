// Message numbers of the statement parser (catalogue group 129) and the
// helper that puts the place and the offending line into a message.
#pragma once

#include <initializer_list>

#include "host/host.hpp"
#include "statements/token.hpp"

namespace qvt {

inline constexpr int kMsgGroupParser = 129;

// Lexical errors.
inline constexpr int kMsgUnterminatedString = 1;
inline constexpr int kMsgUnterminatedComment = 2;
inline constexpr int kMsgBadCharacter = 3;
inline constexpr int kMsgBadLiteral = 4;
inline constexpr int kMsgBadNumber = 5;
inline constexpr int kMsgBadName = 6;
// Programs and steps.
inline constexpr int kMsgEmptyProgram = 10;
inline constexpr int kMsgUnknownStatement = 11;
inline constexpr int kMsgOutsideStep = 12;
// Syntax and repair.
inline constexpr int kMsgSyntax = 20;
inline constexpr int kMsgRepaired = 21;
inline constexpr int kMsgUnrepairable = 22;
inline constexpr int kMsgMisspelled = 23;
// Values.
inline constexpr int kMsgOutOfRange = 30;
inline constexpr int kMsgTooSmall = 31;
inline constexpr int kMsgRepeated = 32;
inline constexpr int kMsgSecondStatement = 33;
inline constexpr int kMsgBadInterval = 34;
// Variable lists against the variables of a data set.
inline constexpr int kMsgVarNotFound = 40;
inline constexpr int kMsgNotNumbered = 41;
inline constexpr int kMsgEmptyRange = 42;
inline constexpr int kMsgWrongType = 43;
inline constexpr int kMsgNoPrefix = 44;
inline constexpr int kMsgNoneOfType = 45;

// Logs message `number` of group 129 with the arguments: the place of pos,
// then `extra`, then (when src is given) the line of pos with a caret.
void stmtMsg(Host& host, const SourceText* src, int number, const SourcePos& pos,
             std::initializer_list<MsgArg> extra);

inline void stmtMsg(Host& host, const SourceText& src, int number, const SourcePos& pos,
                    std::initializer_list<MsgArg> extra) {
  stmtMsg(host, &src, number, pos, extra);
}

}  // namespace qvt
