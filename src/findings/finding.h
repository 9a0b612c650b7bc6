#pragma once

#include <veldmap/findings/place.h>
#include <veldmap/findings/rule.h>

#include <QList>
#include <QString>
#include <QStringList>

namespace veldmap {

/// A second place that a finding speaks of, and what stands there: "first declared here".
struct RelatedPlace {
    Place place;
    QString what;
};

/// An expression that has no value.
struct WrongExpression {
    QString text;             ///< as written, empty for none
    qsizetype character = -1; ///< the one at which it is wrong, from 0; -1 where none is
    QString unknownName = {}; ///< the name in it that has no meaning, if that is what is wrong
};

/// One fault, or one thing to tell: what rule, where, and what its words speak of. No text is made before a sink wants
/// one, and none is taken apart again.
struct Finding {
    const Rule *rule; ///< a row of a table, which outlives every finding
    Place place;
    QStringList arguments; ///< one for each number in the rule's words
    Severity severity;     ///< the rule's, unless the finding is graver or milder than its kind
    QString note = {};     ///< what explains it in a line of its own, empty where its words do
    QList<RelatedPlace> related = {};
    QList<Place> includes = {};      ///< the tags by which its file came into the load, the innermost first
    QString hint = {};               ///< what to do about it, where more is known than the rule's hint says
    WrongExpression expression = {}; ///< that it speaks of, if it speaks of one

    /// A finding of \a rule with the rule's own severity.
    explicit Finding(const Rule &rule, const Place &place = {}, const QStringList &arguments = {})
        : rule(&rule), place(place), arguments(arguments), severity(rule.severity)
    {
    }

    explicit Finding(const Rule &&, const Place & = {}, const QStringList & = {}) = delete; // it would not live

    /// The rule's words with the arguments in their places; inserted text is not scanned again.
    VELDMAP_EXPORT QString text() const;
    /// What to do about it: the finding's own hint, or else that of the rule; empty without any.
    VELDMAP_EXPORT QString whatToDo() const;
    /// The same finding with a further place; one that is null is left out.
    VELDMAP_EXPORT Finding &withPlace(const Place &other, const QString &what);
};

/// "error", "warning" or "note".
VELDMAP_EXPORT QString wordOf(Severity severity);

/// The words of \a rule with "..." in the places of arguments.
VELDMAP_EXPORT QString wordsWithoutArguments(const Rule &rule);

/// "FILE:LINE:COLUMN:TEXT", or the text alone for a finding without a place.
VELDMAP_EXPORT QString placedText(const Finding &finding);

/// Takes findings as they arise.
class Sink {
public:
    virtual ~Sink() = default;
    virtual void take(const Finding &finding) = 0;
};

/// Keeps what it takes.
class FindingList final : public Sink {
public:
    void take(const Finding &finding) override { findings.append(finding); }

    QList<Finding> findings;
};

} // namespace veldmap
