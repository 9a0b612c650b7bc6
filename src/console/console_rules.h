#pragma once

#include "findings/rule.h"

/// What a console has to say about a line that it can't do.
namespace veldmap::console_rules {

using namespace Qt::StringLiterals;

// of a line
inline constexpr Rule kNoMember = {"no-member"_L1, Severity::Error, u"%1 has no member, field or operation '%2'."};
inline constexpr Rule kNoKnownValue = {"no-known-value"_L1, Severity::Error,
                                       u"'%1' is no number, no name that was kept, no variable%2."};
inline constexpr Rule kArguments = {"wrong-arguments"_L1, Severity::Error, u"%1 takes %2."};
inline constexpr Rule kBehindPath = {"behind-path"_L1, Severity::Error, u"'%1' can't stand behind %2."};
inline constexpr Rule kOpenBracket = {"open-bracket"_L1, Severity::Error, u"A '%1' is left open in '%2'."};
inline constexpr Rule kNoIndex = {"no-index"_L1, Severity::Error, u"'%1' is no index: it takes a number from 0 on."};
inline constexpr Rule kHasNoValue = {"element-without-value"_L1, Severity::Error,
                                     u"%1 has no value of its own; name a register, an integer or a field in it."};
inline constexpr Rule kNoNumberHere = {"value-is-no-number"_L1, Severity::Error, u"'%1' is no number of 32 bits."};
inline constexpr Rule kNameIsTaken = {"name-is-taken"_L1, Severity::Error,
                                      u"'%1' can't be kept: it is a variable of the description."};
inline constexpr Rule kNoName = {"no-name"_L1, Severity::Error,
                                 u"'%1' is neither a path nor a name that a value can be kept under."};
inline constexpr Rule kTooDeep = {"lines-too-deep"_L1, Severity::Error,
                                  u"'%1' is nested too deeply: %2 levels are the most."};

// of operations
inline constexpr Rule kUnreadable = {"unreadable"_L1, Severity::Error,
                                     u"%1 can't be read: it is not readable; %2 reads it all the same."};
inline constexpr Rule kUnwritable = {"unwritable"_L1, Severity::Error,
                                     u"%1 can't be written: it is not writable; %2 writes it all the same."};
inline constexpr Rule kRegisterUnwritable = {
    "register-unwritable"_L1, Severity::Error,
    u"%1 can't be written: its register %2 is not writable; 'set force on' writes it all the same."};
inline constexpr Rule kNeedsNoForce = {"needs-no-force"_L1, Severity::Error,
                                       u"%1 needs no force: %2 does the same without."};
inline constexpr Rule kTakesOperation = {"takes-operation"_L1, Severity::Error, u"%1 %2 with %3 alone."};
inline constexpr Rule kNotOffered = {"operation-not-offered"_L1, Severity::Error, u"%1 has no operation %2: it is %3."};
inline constexpr Rule kNoBase = {"register-unreadable"_L1, Severity::Error,
                                 u"%1 can't be changed by itself: its register is not readable; %2 writes the register "
                                 "with what it was last given."};
inline constexpr Rule kCacheTooWide = {"cache-too-wide"_L1, Severity::Error, u"%1: %2 does not fit into %3 bits."};
inline constexpr Rule kStale = {"stale-value"_L1, Severity::Error,
                                u"%1 has no value: its last reading failed; r reads it again, setl gives it one."};
inline constexpr Rule kNotStuck = {"write-not-stuck"_L1, Severity::Error,
                                   u"%1 did not take %2: it reads %3; after 'set verify off' nobody looks."};

// of targets
inline constexpr Rule kNoTarget = {"no-target-yet"_L1, Severity::Error,
                                   u"There is no target; 'connect' tries again, 'connect KIND:...' takes another."};
inline constexpr Rule kCantRead = {"target-unreadable"_L1, Severity::Error, u"%1 can't be read: %2"};
inline constexpr Rule kCantWrite = {"target-unwritable"_L1, Severity::Error, u"%1 can't be written: %2"};
inline constexpr Rule kNoWay = {"no-way-to-it"_L1, Severity::Error,
                                u"%1 can't be reached: a pointer to it can't be read: %2"};
inline constexpr Rule kCantConnect = {"cannot-connect"_L1, Severity::Error, u"%1 does not answer: %2"};
inline constexpr Rule kCantFlush = {"cannot-flush"_L1, Severity::Error, u"What was written is not kept: %1"};
inline constexpr Rule kSomeUnread = {"some-unread"_L1, Severity::Error, u"%1 can't be read whole: %2"};
inline constexpr Rule kInterrupted = {"interrupted"_L1, Severity::Error, u"Interrupted."};

// of commands
inline constexpr Rule kNoCommandHelp = {"no-help"_L1, Severity::Error,
                                        u"There is no command and no operation '%1'; 'help' shows which there are."};
inline constexpr Rule kUsage = {"command-usage"_L1, Severity::Error, u"It is written: %1"};
inline constexpr Rule kNowhere = {"nothing-there"_L1, Severity::Error, u"Nothing lies at the address %1."};
inline constexpr Rule kNotFound = {
    "no-such-thing"_L1, Severity::Error,
    u"Nothing is called '%1', and no comment has the word; '*' in a name stands for any letters."};
inline constexpr Rule kDumpRange = {"dump-range"_L1, Severity::Error,
                                    u"%1 bytes from %2 on can't be shown: a dump has from 1 to %3 bytes below 2^32."};
inline constexpr Rule kDumpWidth = {"dump-width"_L1, Severity::Error,
                                    u"Address and size are no multiples of %1, which takes 1, 2 or 4."};
inline constexpr Rule kNoSeconds = {"no-seconds"_L1, Severity::Error, u"'%1' is no time in seconds."};
inline constexpr Rule kWatchForEver = {"watch-for-ever"_L1, Severity::Error,
                                       u"In a script, watch takes the seconds after which it ends: %1"};
inline constexpr Rule kNotYet = {"wait-is-over"_L1, Severity::Error, u"%1 did not become true within %2 s: it is %3."};
inline constexpr Rule kNoSetting = {"unknown-setting"_L1, Severity::Error,
                                    u"There is no setting '%1'; 'set' shows which there are."};
inline constexpr Rule kNoSettingValue = {"no-setting-value"_L1, Severity::Error, u"%1 takes %2, not '%3'."};
inline constexpr Rule kNoFile = {"console-file-unreadable"_L1, Severity::Error, u"%1 can't be read: %2"};
inline constexpr Rule kFileUnwritable = {"console-file-unwritable"_L1, Severity::Error, u"%1 can't be written: %2"};
inline constexpr Rule kNoSnapshot = {"no-snapshot"_L1, Severity::Error,
                                     u"%1:%2 is no line of a snapshot: '%3'; one is PATH = VALUE."};
inline constexpr Rule kSourceTooDeep = {"source-too-deep"_L1, Severity::Error,
                                        u"%1 is not run: files run one another %2 deep already."};
inline constexpr Rule kNotAsked = {"restore-not-asked"_L1, Severity::Error,
                                   u"Nothing is restored: in a script, '--yes' behind the file or 'set force on' takes "
                                   "the place of the answer."};
inline constexpr Rule kRefused = {"restore-refused"_L1, Severity::Error, u"Nothing is restored."};
inline constexpr Rule kNotRestored = {"not-restored"_L1, Severity::Error, u"%1 of %2 registers were not restored."};
inline constexpr Rule kNothingToSave = {"nothing-to-save"_L1, Severity::Error,
                                        u"Nothing is kept: no register there can be read."};

} // namespace veldmap::console_rules
