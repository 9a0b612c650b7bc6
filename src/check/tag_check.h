#pragma once

#include "check/lint_rule.h"
#include "check/schema.h"
#include "findings/finding.h"
#include "xml/tag_document.h"

namespace veldmap {

/// A tag that is looked at, with those that it stands in.
struct TagInContext {
    Tag tag;
    const TagRow &row;
    const TagInContext *parent = nullptr; ///< null for the root

    TagKind kind() const { return row.kind; }
    /// The nearest tag around this one that is of \a kind, or null.
    const TagInContext *enclosing(TagKind kind) const;
    /// The tag as findings name it, with the names around it: "bits 'uart.ctrl.speed'", or "archive" without any.
    QString title() const;
};

/// Tells findings of one document, whose places have no file.
class DocumentTeller {
public:
    explicit DocumentTeller(Sink &sink) : m_sink(sink) {}

    /// The first argument is the title of \a at.
    void tell(const LintRule &rule, const TagInContext &at, const QStringList &arguments) const;
    /// The same with a second place.
    void tell(const LintRule &rule, const TagInContext &at, const QStringList &arguments, const Tag &other,
              const QString &what) const;

private:
    static Place placeOf(const Tag &tag);

    Sink &m_sink;
};

/// A value as a finding shows it: in one line, and not longer than one reads.
QString shownText(QStringView value);

// Words: word_checks.cpp
void checkUnknownAttribute(const TagInContext &at, QStringView attribute, const DocumentTeller &teller);
void checkWord(const TagInContext &at, const AttributeRow &row, QStringView value, const DocumentTeller &teller);

// Names: name_checks.cpp
void checkName(const TagInContext &at, ValueKind kind, QStringView name, const DocumentTeller &teller);
/// Looks at the name of a file in an attribute of \a at.
void checkFileName(const TagInContext &at, QStringView file, const DocumentTeller &teller);

// Texts: text_checks.cpp
void checkComment(const TagInContext &at, const DocumentTeller &teller);
void checkCJoker(const TagInContext &at, const DocumentTeller &teller);

} // namespace veldmap
