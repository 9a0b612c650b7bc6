#pragma once

#include "findings/rule.h"

/// What a load has to say, in its exact words: published texts that hosts and their users know by heart. A line feed at
/// an end belongs to the text.
namespace veldmap::rules {

using namespace Qt::StringLiterals;

// Files and documents

inline constexpr Rule nothingToLoad = {"nothing-to-load"_L1, Severity::Note, u"No XML %1 to Load."};
inline constexpr Rule rootLoaded = {"root-loaded"_L1, Severity::Note, u"%1 %2 loaded."};
inline constexpr Rule loadingFile = {"loading-file"_L1, Severity::Note, u"Loading %1..."};
inline constexpr Rule fileNotOpened = {"file-not-opened"_L1, Severity::Warning, u"Unable to open file %1"};
inline constexpr Rule fileNotRead = {"file-not-read"_L1, Severity::Error, u"The file can't be read: %1"};
inline constexpr Rule fileTooLarge = {"file-too-large"_L1, Severity::Error, u"The file is larger than %1 bytes."};
inline constexpr Rule tooManyTags = {"too-many-tags"_L1, Severity::Error, u"The file has more than %1 tags."};

// Archives

inline constexpr Rule veryOldFormat = {"very-old-format"_L1, Severity::Error,
                                       u"Old archive format! Please edit your xml files to conform to the new norm."};
inline constexpr Rule noArchive = {"no-archive"_L1, Severity::Error, u"Bad archive format!",
                                   u"the root of a description is <archive>"};
inline constexpr Rule oldFormat = {"old-format"_L1, Severity::Warning,
                                   u"You are using an old archive format! Please enclose the content of your file into "
                                   u"an <archive> tag!"};
inline constexpr Rule foreignTagAmongArchives = {"foreign-tag-among-archives"_L1, Severity::Error,
                                                 u"Unvalid '%1' tag.\n", u"a <bigarchive> holds <archive> tags alone"};
inline constexpr Rule foreignTagInArchive = {"foreign-tag-in-archive"_L1, Severity::Error, u"Unvalid tag : '%1'"};
inline constexpr Rule tooManyArchives = {"too-many-archives"_L1, Severity::Error,
                                         u"The description has more than %1 archives."};

// Includes

inline constexpr Rule includeSkipped = {"include-skipped"_L1, Severity::Warning, u"Skipped."};
inline constexpr Rule includesTooDeep = {"includes-too-deep"_L1, Severity::Error,
                                         u"Files are included more than %1 deep."};
inline constexpr Rule includeCondition = {
    "include-condition"_L1, Severity::Error, u"Condition '%1' of include '%2' contains an error in its expression !",
    u"a condition sees what stands further up, and the files that are included there"};
inline constexpr Rule foreignTagInInclude = {"foreign-tag-in-include"_L1, Severity::Error,
                                             u"Include contains an unvalid '%1' tag.\n"};

// Variables, ranges and enums

inline constexpr Rule variableWithoutName = {"variable-without-name"_L1, Severity::Error,
                                             u"A variable of the archive '%1' has no name!", u"give it name=\"...\""};
inline constexpr Rule variableWithoutValue = {"variable-without-value"_L1, Severity::Error,
                                              u"The variable '%1' of the archive '%2' has no value!",
                                              u"give it value=\"...\""};
inline constexpr Rule variableExpression = {"variable-expression"_L1, Severity::Error,
                                            u"In archive '%1', variable '%2' declaration : %3"};
inline constexpr Rule rangeWithoutName = {"range-without-name"_L1, Severity::Error, u"Range has no name!",
                                          u"give it name=\"...\""};
inline constexpr Rule rangeWithoutBound = {"range-without-bound"_L1, Severity::Error,
                                           u"The range '%1' misses left or right value!",
                                           u"give it left=\"...\" and right=\"...\""};
inline constexpr Rule rangeDirection = {"range-direction"_L1, Severity::Error,
                                        u"Invalid direction '%1' for range '%2' .", u"dir is \"up\" or \"down\""};
inline constexpr Rule rangeExpression = {"range-expression"_L1, Severity::Error, u"In range '%1' declaration : %2"};
inline constexpr Rule foreignTagInEnum = {"foreign-tag-in-enum"_L1, Severity::Error,
                                          u"Enum '%1' contains an unvalid '%2' tag."};
inline constexpr Rule entryWithoutName = {"entry-without-name"_L1, Severity::Error, u"This entry has no name!",
                                          u"give it name=\"...\""};
inline constexpr Rule boundWithoutName = {"bound-without-name"_L1, Severity::Error,
                                          u"A bound of the enum '%1' has no name!", u"give it name=\"...\""};
inline constexpr Rule enumExpression = {"enum-expression"_L1, Severity::Error, u"Enum '%1', expression '%2' : %3\n"};

// Modules, typedefs, structs, holes and aliases

inline constexpr Rule noModule = {"no-module"_L1, Severity::Error, u"\"module\" or \"typedef\" tag not found."};
inline constexpr Rule moduleWithoutName = {"module-without-name"_L1, Severity::Error, u"module has no name !",
                                           u"give it name=\"...\""};
inline constexpr Rule typeAlreadyKnown = {"type-already-known"_L1, Severity::Warning,
                                          u"Type '%1' already exists or already loaded ! (discarding this one)",
                                          u"this one is not used; rename or remove one of them"};
inline constexpr Rule foreignTagInModule = {"foreign-tag-in-module"_L1, Severity::Error,
                                            u"Module contains an unvalid %1 tag.\n"};
inline constexpr Rule structWithoutName = {"struct-without-name"_L1, Severity::Error,
                                           u"Tag defining '%1' contains struct with no name !",
                                           u"give it name=\"...\""};
inline constexpr Rule structCount = {"struct-count"_L1, Severity::Error,
                                     u"Tag defining '%1' contains struct '%2' with an error in its count expression !"};
inline constexpr Rule foreignTagInStruct = {"foreign-tag-in-struct"_L1, Severity::Error,
                                            u"Struct '%1' contains an unvalid '%2' tag.\n"};
inline constexpr Rule holeExpression = {"hole-expression"_L1, Severity::Error, u"Hole expression %1 : %2\n"};
inline constexpr Rule foreignTagInAlias = {"foreign-tag-in-alias"_L1, Severity::Error,
                                           u"Alias '%1' contains an unvalid '%2' tag.\n"};

// Instances, memories and pointers

inline constexpr Rule instanceAddress = {
    "instance-address"_L1, Severity::Error,
    u"Address of instance '%1' of type '%2' contains an error in its expression !"};
inline constexpr Rule instanceWithoutName = {"instance-without-name"_L1, Severity::Error,
                                             u"Instance of '%1' has no name!", u"give it name=\"...\""};
inline constexpr Rule instanceWithoutType = {"instance-without-type"_L1, Severity::Error,
                                             u"Could not instanciate instance '%1'! (missing module or typedef name)",
                                             u"give it type=\"...\" with the name of a module, typedef or alias"};
inline constexpr Rule instanceOfUnknownType = {
    "instance-of-unknown-type"_L1, Severity::Error,
    u"Could not instanciate instance '%1' of type '%2'! (missing include or include not valid?)",
    u"a type is declared before it is used: further up in this file, or in one that is included"};
inline constexpr Rule memberWithoutName = {"member-without-name"_L1, Severity::Error,
                                           u"Found instance with no name!.\n", u"give it name=\"...\""};
inline constexpr Rule memberWithoutType = {"member-without-type"_L1, Severity::Error, u"Instance '%1' has no type!.\n",
                                           u"give it type=\"...\" with the name of a typedef, alias or enum"};
inline constexpr Rule memberCount = {
    "member-count"_L1, Severity::Error,
    u"Tag defining '%1' contains instance '%2' with an error in its count expression !"};
inline constexpr Rule memberOfUnknownType = {
    "member-of-unknown-type"_L1, Severity::Error,
    u"Instance '%1' uses type '%2' which does not exist (or which must be declared before) !.\n",
    u"a type is declared before it is used: further up in this file, or in one that is included"};
inline constexpr Rule memorySize = {"memory-size"_L1, Severity::Error, u"Memory '%1' : error in the size expression !"};
inline constexpr Rule foreignTagInMemory = {"foreign-tag-in-memory"_L1, Severity::Error,
                                            u"Memory '%1' contains an unvalid '%2' tag.\n"};
inline constexpr Rule foreignTagInPointer = {"foreign-tag-in-pointer"_L1, Severity::Error,
                                             u"Pointer '%1' contains an unvalid '%2' tag.\n"};

// Registers, integers and bitfields

inline constexpr Rule valuableWithoutName = {"valuable-without-name"_L1, Severity::Error,
                                             u"Module contains an unamed %1\n", u"give it name=\"...\""};
inline constexpr Rule foreignTagInValuable = {"foreign-tag-in-valuable"_L1, Severity::Error,
                                              u"%1 %2 contains an unvalid %3 tag.\n"};
inline constexpr Rule arrayCount = {
    "array-count"_L1, Severity::Error,
    u"Tag defining '%1' contains %2 array '%3' with an error in its count expression !"};
inline constexpr Rule negativeCount = {"negative-count"_L1, Severity::Error,
                                       u"Invalid '%1' array count of type '%2' for array '%3'\n",
                                       u"a count is 0 or more"};
inline constexpr Rule fieldWithoutName = {"field-without-name"_L1, Severity::Error,
                                          u"Valuable %1 contains an unamed bitfield.\n", u"give it name=\"...\""};
inline constexpr Rule fieldWithoutPosition = {"field-without-position"_L1, Severity::Error,
                                              u"Valuable %1, bitfield %2 : position undefined\n",
                                              u"give it pos=\"3:0\", or pos=\"3\" for one bit"};
inline constexpr Rule positionTooLong = {"position-too-long"_L1,
                                         Severity::Error,
                                         u"Valuable %1, bitfield %2 : position longer than %3 characters",
                                         {},
                                         "pos"_L1};
inline constexpr Rule tooManyFields = {"too-many-fields"_L1, Severity::Error,
                                       u"Valuable %1 has more than %2 bitfields."};
inline constexpr Rule positionExpression = {"position-expression"_L1, Severity::Error,
                                            u"Valuable %1, bitfield %2, expression %3 : %4\n"};
inline constexpr Rule cutStart = {"cut-start"_L1, Severity::Error,
                                  u"Valuable '%1', bitfield '%2', expression '%3' : %4\n"};
inline constexpr Rule cutSize = {"cut-size"_L1, Severity::Error, u"Valuable %1, bitfield %2 : bad cut size\n",
                                 u"cut is the width of one piece in bits, a number from 1 on", "cut"_L1};
inline constexpr Rule cutUneven = {
    "cut-uneven"_L1, Severity::Error,
    u"Valuable %1, bitfield %2 : cutting bitfield with divisor non-multiple of total bitfield size\n",
    u"all pieces have one width: make cut a divisor of the width of the field", "cut"_L1};
inline constexpr Rule cutTooFine = {"cut-too-fine"_L1,
                                    Severity::Error,
                                    u"Valuable %1, bitfield %2 : cutting bitfield into more than %3 pieces",
                                    {},
                                    "cut"_L1};
inline constexpr Rule cutEnum = {
    "cut-enum"_L1, Severity::Error, u"Bitfield '%1' is cut thanks to an undefined enum '%2'.\n",
    u"an enum is declared before it is used: further up in this file, or in one that is included"};
inline constexpr Rule foreignTagInField = {"foreign-tag-in-field"_L1, Severity::Error,
                                           u"Bitfield '%1' contains an unvalid '%2' tag.\n"};

// Bitgroups and options

inline constexpr Rule foreignTagInGroup = {"foreign-tag-in-group"_L1, Severity::Error,
                                           u"Bitgroup %1 contains an unvalid %2 tag.\n"};
inline constexpr Rule groupReference = {
    "group-reference"_L1, Severity::Error, u"Bitgroup '%1' contains an undefined bitfield or bitgroup '%2'.\n",
    u"an entry names a field or bitgroup that stands further up in the same register"};
inline constexpr Rule optionsEnum = {
    "options-enum"_L1, Severity::Error, u"Options of bitfield '%1' is linked to an undefined enum '%2'.\n",
    u"an enum is declared before it is used: further up in this file, or in one that is included"};
inline constexpr Rule optionBesideEnum = {
    "option-beside-enum"_L1, Severity::Error,
    u"Options of bitfield '%1' is linked to enum '%2' but tries to define an other option.\n",
    u"options come from linkenum or from option tags, not from both"};
inline constexpr Rule foreignTagInOptions = {"foreign-tag-in-options"_L1, Severity::Error,
                                             u"Options of bitfield '%1' contains an unvalid '%2' tag.\n"};
inline constexpr Rule optionExpression = {"option-expression"_L1, Severity::Error, u"Option expression %1 : %2\n"};
inline constexpr Rule foreignTagInOption = {"foreign-tag-in-option"_L1, Severity::Error,
                                            u"Bitfield options '%1' contains an unvalid '%2' tag.\n"};

// Much out of little

inline constexpr Rule arrayTooLarge = {"array-too-large"_L1, Severity::Error,
                                       u"Array '%1' is too large: it would hold %2 elements, and %3 is the limit.",
                                       u"describe a large table as <memory>"};
inline constexpr Rule tooManyCopies = {
    "too-many-copies"_L1, Severity::Error,
    u"The instances, arrays and cut bitfields of the description hold more than %1 elements."};
inline constexpr Rule nameTooLong = {"name-too-long"_L1, Severity::Error, u"The name is longer than %1 characters."};
inline constexpr Rule tooMuchText = {
    "too-much-text"_L1, Severity::Error,
    u"The names of array members and of pieces, and the positions and options of bitfields, hold more than "
    u"%1 characters."};
inline constexpr Rule entityTexts = {"entity-texts"_L1, Severity::Error,
                                     u"The entities of all documents together grow beyond %1 characters."};
inline constexpr Rule filesReadAgain = {
    "files-read-again"_L1, Severity::Error,
    u"Files are read again under other names, and count for more than %1 elements together with all other copies."};
inline constexpr Rule typesTooDeep = {"types-too-deep"_L1, Severity::Error, u"Types are nested more than %1 deep."};

inline constexpr Rule pathTooLong = {"path-too-long"_L1, Severity::Error,
                                     u"The names of the elements in one another have more than %1 characters in all."};

} // namespace veldmap::rules
