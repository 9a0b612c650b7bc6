#pragma once

#include "check/lint_rule.h"

/// What is wrong with the words, names, numbers and texts of a document. The first argument of nearly all is the tag,
/// as "bits 'uart.ctrl.speed'".
namespace veldmap::rules {

using namespace Qt::StringLiterals;

// Words

inline constexpr LintRule unknownAttribute = {
    {"unknown-attribute"_L1, Severity::Warning, u"%1: '%2' is no attribute of '%3'%4"}};
inline constexpr LintRule unusedAttribute = {
    {"unused-attribute"_L1, Severity::Warning, u"%1: attribute '%2' has no effect here%3"}};
inline constexpr LintRule unusedTag = {{"unused-tag"_L1, Severity::Warning, u"%1: a '%2' in it has no effect"}};
inline constexpr LintRule unknownValue = {{"unknown-value"_L1, Severity::Warning, u"%1: %2=\"%3\" %4"}};
inline constexpr LintRule repeatedText = {{"repeated-text"_L1, Severity::Warning, u"%1 replaces the one in line %2"}};
inline constexpr LintRule resetCut = {
    {"reset-cut"_L1, Severity::Warning, u"%1: the reset value %2 does not fit %3 bits and is cut to %4"}};

// Names

inline constexpr LintRule changedName = {
    {"changed-name"_L1, Severity::Warning,
     u"%1: the name '%2' becomes '%3', since names have letters, digits and underscores alone",
     u"write the name as it becomes, so that it can be found again"}};
inline constexpr LintRule illegalName = {
    {"illegal-name"_L1, Severity::Warning, u"%1: '%2' is no name that C can have, since %3"}};
inline constexpr LintRule reservedWord = {{"reserved-word"_L1, Severity::Warning,
                                           u"%1: '%2' is a reserved word of %3, which refuses it as a name",
                                           u"use another name"}};

inline constexpr LintRule unusableName = {{"unusable-name"_L1, Severity::Error,
                                           u"%1: the name '%2' holds %3, which breaks all that is made of it",
                                           u"names have letters, digits and underscores"}};
inline constexpr LintRule nameless = {{"nameless"_L1, Severity::Warning, u"%1 has no name", u"give it name=\"...\""}};

// Numbers

inline constexpr LintRule numberTooLarge = {
    {"number-too-large"_L1, Severity::Warning, u"%1: the number %2 in %3 is beyond 32 bits and is read as %4"}};
inline constexpr LintRule resultTooLarge = {
    {"result-too-large"_L1, Severity::Warning, u"%1: %2=\"%3\" is %4, which is beyond 32 bits and is taken for %5"}};
inline constexpr LintRule hexadecimalAddress = {{"hexadecimal-address"_L1, Severity::Warning,
                                                 u"%1: address=\"%2\" looks hexadecimal, but without 0x it is %3",
                                                 u"put 0x in front of it"}};
inline constexpr LintRule valueInC = {{"value-in-c"_L1, Severity::Warning,
                                       u"%1: %2=\"%3\" is %4 here, but C reads its text in the headers as %5%6",
                                       u"put parentheses around what belongs together"}};

// Texts

inline constexpr LintRule trailingBackslash = {
    {"trailing-backslash"_L1, Severity::Warning,
     u"%1: a line of it ends with a backslash, so that C skips the next line"}};
inline constexpr LintRule commentEnd = {
    {"comment-end"_L1, Severity::Warning, u"%1: the '*/' in it ends a C comment around the header's text"}, false};
inline constexpr LintRule unprintableText = {
    {"unprintable-text"_L1, Severity::Warning, u"%1: it has a character that does not print, U+%2"}};
inline constexpr LintRule commentMarkup = {{"comment-markup"_L1, Severity::Warning, u"%1: '%2' in it %3"}};
inline constexpr LintRule commentScript = {{"comment-script"_L1, Severity::Warning,
                                            u"%1: %2 in it is run by the browser of whoever opens the page",
                                            u"leave it out: pages are read by others"}};
inline constexpr LintRule openCondition = {{"open-condition"_L1, Severity::Warning, u"%1: its line %2, '%3', %4"}};

// Notes that allow something

inline constexpr LintRule unknownWaiver = {
    {"unknown-waiver"_L1, Severity::Warning, u"this note of veldmap allows less than it says: %1"}};

} // namespace veldmap::rules
