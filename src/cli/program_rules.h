#pragma once

#include "findings/rule.h"

/// What the program itself has to say, beside what the library finds.
namespace veldmap::cli::rules {

using namespace Qt::StringLiterals;

// of the command line
inline constexpr Rule kNoCommand = {"no-command"_L1, Severity::Error,
                                    u"No command is given; 'veldmap --help' shows which there are."};
inline constexpr Rule kUnknownCommand = {"unknown-command"_L1, Severity::Error,
                                         u"There is no command %1; 'veldmap --help' shows which there are."};
inline constexpr Rule kUnknownCommandButNear = {"misspelt-command"_L1, Severity::Error,
                                                u"There is no command %1; did you mean '%2'?"};
inline constexpr Rule kWrongOptions = {"wrong-options"_L1, Severity::Error,
                                       u"%1; 'veldmap %2--help' shows what is expected."};
inline constexpr Rule kOneInput = {"one-input"_L1, Severity::Error,
                                   u"The standard input, '-', holds one description: chip or software."};
inline constexpr Rule kInputHasNoName = {
    "input-without-name"_L1, Severity::Error,
    u"What is written is named after its description, and the standard input has no name: give a file."};
inline constexpr Rule kUnexpected = {"unexpected-argument"_L1, Severity::Error,
                                     u"The argument %1 is not expected; 'veldmap %2 --help' shows which are."};
inline constexpr Rule kNoWord = {"missing-argument"_L1, Severity::Error, u"No %1 is given."};
inline constexpr Rule kNoRoot = {"no-description"_L1, Severity::Error,
                                 u"No description is given: name one with --chip FILE or --soft FILE."};
inline constexpr Rule kNoChip = {"no-chip"_L1, Severity::Error,
                                 u"VHDL packages are those of a chip: name its description with --chip FILE."};
inline constexpr Rule kNothingAsked = {"nothing-asked"_L1, Severity::Error,
                                       u"Nothing is asked for: name directories with --headers, --vhdl, --site or "
                                       "--docs."};
inline constexpr Rule kNothingChecked = {"nothing-checked"_L1, Severity::Error,
                                         u"--self-check is for headers and packages: name a directory with --headers "
                                         "or --vhdl."};
inline constexpr Rule kNoImageName = {"image-without-name"_L1, Severity::Error,
                                      u"The image has no name: --image takes a file."};
inline constexpr Rule kNoAddress = {"no-address"_L1, Severity::Error,
                                    u"'%1' is no address: --at takes a number of 32 bits."};
inline constexpr Rule kNoTargetGiven = {
    "no-target-given"_L1, Severity::Error,
    u"No target is given: name one with --target KIND:..., or a file with --image FILE --at ADDRESS."};
inline constexpr Rule kNoTimeout = {"no-timeout"_L1, Severity::Error,
                                    u"'%1' is no time: --timeout takes seconds, from 0.001 to 3600."};
inline constexpr Rule kNoThreads = {"no-threads"_L1, Severity::Error,
                                    u"'%1' is no number of threads: -j takes one from 1 on."};
inline constexpr Rule kNoSize = {
    "no-size"_L1, Severity::Error,
    u"'%1' is no size: --max-output takes a number of bytes from 1 on, or one of kilobytes, "
    "megabytes or gigabytes, as 500M."};
inline constexpr Rule kNoBase = {"no-base-directory"_L1, Severity::Error,
                                 u"%1 is no directory: --base takes the one that the names of files start from."};
inline constexpr Rule kNoAssignment = {"no-assignment"_L1, Severity::Error,
                                       u"'%1' does not say what to write: PATH=VALUE."};
inline constexpr Rule kNoRule = {"unknown-rule"_L1, Severity::Error,
                                 u"There is no rule '%1'; 'veldmap rules' shows which there are."};
inline constexpr Rule kNoRuleButNear = {"misspelt-rule"_L1, Severity::Error,
                                        u"There is no rule '%1'; did you mean '%2'?"};
inline constexpr Rule kNoMessageNumber = {"no-message-number"_L1, Severity::Error,
                                          u"'%1' is no number of messages: --max-messages takes one from 0 on."};
inline constexpr Rule kNoFindingNumber = {"no-finding-number"_L1, Severity::Error,
                                          u"'%1' is no number of findings: --max-findings takes one from 0 on."};
inline constexpr Rule kNoExportFormat = {"no-export-format"_L1, Severity::Error,
                                         u"No format is given: --format takes one of %1."};
inline constexpr Rule kNoOptionFile = {"no-option-file"_L1, Severity::Error,
                                       u"The file of options %1 can't be read: %2"};

// of the run
inline constexpr Rule kMoreFindings = {"more-findings"_L1, Severity::Note,
                                       u"%1 more findings are not told; --max-messages=0 tells all."};
inline constexpr Rule kNotLoaded = {"not-loaded"_L1, Severity::Error, u"%1 did not load: %2"};
inline constexpr Rule kExportUnwritten = {"export-unwritable"_L1, Severity::Error, u"%1 can't be written: %2"};
inline constexpr Rule kMoreOfAKind = {"more-of-a-kind"_L1, Severity::Note,
                                      u"%1 more findings like these are not told; --max-findings=0 tells all."};
inline constexpr Rule kNoDirectory = {"no-directory"_L1, Severity::Error, u"The directory %1 can't be made: %2"};
inline constexpr Rule kUnwritten = {"list-unwritable"_L1, Severity::Error, u"%1 can't be written: %2"};
inline constexpr Rule kWritten = {"files-written"_L1, Severity::Note, u"%1 files written, %2 unchanged, %3 failed."};
inline constexpr Rule kWrittenOrSkipped = {"files-written-or-skipped"_L1, Severity::Note,
                                           u"%1 files written, %2 unchanged, %3 failed, %4 up to date."};
inline constexpr Rule kNothingAt = {"nothing-at-address"_L1, Severity::Error, u"Nothing lies at the address %1."};
inline constexpr Rule kNothingFound = {
    "nothing-found"_L1, Severity::Error,
    u"Nothing is called '%1', and no comment has the word; '*' in a name stands for any letters."};
inline constexpr Rule kOutput = {"output-unwritable"_L1, Severity::Error, u"The standard output can't be written: %1"};
inline constexpr Rule kResultTooLarge = {
    "printed-too-large"_L1, Severity::Error,
    u"The output ends here, since it would be more than %1 bytes; --max-output SIZE allows more."};
inline constexpr Rule kThereAlready = {"there-already"_L1, Severity::Error, u"%1 is there already and stays as it is."};
inline constexpr Rule kScriptUnreadable = {"script-unreadable"_L1, Severity::Error, u"%1 can't be read: %2"};
inline constexpr Rule kHint = {"hint"_L1, Severity::Note, u"%1"};
inline constexpr Rule kImportThere = {"import-there"_L1, Severity::Error,
                                      u"%1 is there already and differs; nothing is written.",
                                      u"--update keeps what was added to an import, another directory leaves it alone"};
inline constexpr Rule kNewUnwritable = {"new-unwritable"_L1, Severity::Error, u"%1 can't be written: %2"};
inline constexpr Rule kDevelopmentKey = {
    "development-key"_L1, Severity::Warning,
    u"%1 keeps nothing secret: this veldmap was built with the development key, which everybody has."};

} // namespace veldmap::cli::rules
