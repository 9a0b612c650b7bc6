#pragma once

#include "check/tag_check.h"

#include <QHash>

namespace veldmap {

/// Looks at the numbers of one document, in its order. Knows the variables and entries that the document declares with
/// values of its own; other names may have any value.
class NumberChecks {
public:
    explicit NumberChecks(const DocumentTeller &teller) : m_teller(teller) {}

    void check(const TagInContext &at, const AttributeRow &row, QStringView value);
    /// Learns what \a at declares, if it is a number.
    void learn(const TagInContext &at);

private:
    bool checkLiterals(const TagInContext &at, const AttributeRow &row, QStringView value) const;
    void checkAddress(const TagInContext &at, QStringView value) const;
    void checkValue(const TagInContext &at, const AttributeRow &row, QStringView value, bool isCut) const;

    const DocumentTeller &m_teller;
    QHash<QString, int> m_names;
    int m_lastEntry = -1; // of the enum that is being read
};

} // namespace veldmap
