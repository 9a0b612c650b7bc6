#pragma once

#include "check/declared.h"
#include "text/bit_arithmetic.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

namespace veldmap {

/// A macro that headers define for a field, an option or a bitgroup.
struct FieldMacro {
    bool hasParameter = false; ///< it puts a value in its place
    quint32 value = 0;         ///< in place; of a macro with parameter the mask, moved down to bit 0
    int shift = 0;             ///< of a macro with parameter
    const VMValuable *owner = nullptr;

    bool hasValueOf(const FieldMacro &other) const
    {
        return hasParameter == other.hasParameter && value == other.value && shift == other.shift;
    }
};

/// The name of such a macro without the type's name and the underscore behind it: "SPEED", or "SPEED_MASK" of two
/// parts. Few of the names that are compared are ever needed as text. It looks at names in the tree.
class MacroName {
public:
    explicit MacroName(QStringView field) : m_field(field), m_hash(hashed(kSeed, field)) {}
    /// The name that goes on with "_" and \a part.
    MacroName with(QStringView part) const
    {
        MacroName name = *this;
        name.m_part = part;
        name.m_hash = hashed((m_hash ^ u'_') * kPrime, part);
        return name;
    }

    /// Equal names have one hash.
    quint64 hash() const { return m_hash; }
    /// In capitals, as headers have it.
    QString text() const;
    friend bool operator==(const MacroName &one, const MacroName &other)
    {
        if (one.m_hash != other.m_hash)
            return false;
        if (one.m_field.size() == other.m_field.size() && one.m_part.isNull() == other.m_part.isNull())
            return areAlike(one.m_field, other.m_field) && areAlike(one.m_part, other.m_part);
        return one.text() == other.text();
    }

private:
    static constexpr quint64 kSeed = 0xCBF29CE484222325u;
    static constexpr quint64 kPrime = 0x100000001B3u;
    static quint64 hashed(quint64 hash, QStringView text)
    {
        for (const QChar c : text)
            hash = (hash ^ folded(c)) * kPrime;
        return hash;
    }
    static char16_t folded(QChar c)
    {
        const char16_t unit = c.unicode();
        return unit >= u'a' && unit <= u'z' ? char16_t(unit - u'a' + u'A') : unit;
    }
    static bool areAlike(QStringView one, QStringView other)
    {
        return std::ranges::equal(one, other, {}, folded, folded);
    }

    QStringView m_field;
    QStringView m_part = {};
    quint64 m_hash;
};

/// The first macro of each name. It is emptied for the next type without giving memory back.
class MacroTable {
public:
    void clear();
    /// The macro that has the name already; null when there was none, and \a macro has it now.
    const FieldMacro *add(const MacroName &name, const FieldMacro &macro);

private:
    struct Row {
        MacroName name = MacroName({});
        FieldMacro macro = {};
        quint32 round = 0; ///< in which it was filled
    };
    Row &rowFor(const MacroName &name);
    void grow();

    std::vector<Row> m_rows; ///< a power of two, or none
    std::size_t m_used = 0;
    quint32 m_round = 1;
};

/// Hears macros.
using MacroListener = std::function<void(const MacroName &name, const FieldMacro &macro)>;

/// Tells \a listener all macros of the type \a element, in the order of the headers, also those that stand commented
/// out there. What an inner type has in several places is told once.
void forEachMacro(const VMXMLElement &element, const MacroListener &listener);

} // namespace veldmap
