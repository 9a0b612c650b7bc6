#include "site/page_rows.h"

#include "model/visit.h"
#include "text/bit_arithmetic.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// The name of \a element as a piece of a macro's name, in which an array has a place for each index.
QByteArray asmPiece(const PageRow &row)
{
    QString name = row.name.toUpper();
    name.replace(u'[', u'_');
    name.remove(u']');
    QByteArray piece = name.toUtf8();
    for (std::size_t at = row.repeatedAround; at < row.repetitions.size(); ++at)
        piece += QByteArray("_{") + row.repetitions[at].letter + '}';
    return piece;
}

class RowCollector {
public:
    RowCollector(PageIds &ids, PageRows &rows, bool hasAsm) : m_ids(ids), m_rows(rows), m_hasAsm(hasAsm) {}

    /// Where an element stands on the page.
    struct Site {
        QByteArray id;
        QString path; ///< as descriptions have it
        quint32 offset;
        QByteArray asmPrefix;
        int level;
        std::vector<Repetition> repetitions;
    };

    void collect(const VMXMLElement &element, const Site &parent)
    {
        PageRow row;
        row.level = parent.level;
        row.name = element.getName();
        row.offset = parent.offset + element.offset;
        row.repetitions = parent.repetitions;
        row.repeatedAround = parent.repetitions.size();
        row.element = unfold(element, row);
        visit(*row.element, Overloads{[&](const VMStruct &structure) { collectStruct(structure, row, parent); },
                                      [&](const VMValuable &valuable) {
                                          nameRow(row, parent);
                                          for (const auto &field : valuable.bitFields)
                                              row.fieldIds.push_back(m_ids.take(row.id, field->getName()));
                                          m_rows.push_back(std::move(row));
                                      },
                                      [&](const VMHole &) { m_rows.push_back(std::move(row)); },
                                      [&](const VMXMLElement &) {
                                          nameRow(row, parent);
                                          m_rows.push_back(std::move(row));
                                      }});
    }

    void collectMembers(const VMStruct &structure, const Site &site)
    {
        for (const auto &member : structure.memberList)
            collect(*member, site);
    }

private:
    /// What \a element repeats, with each repetition noted; itself if it is no array.
    static const VMXMLElement *unfold(const VMXMLElement &element, PageRow &row)
    {
        constexpr char kLetters[] = "nmklpqrstuvwxyz";
        const VMXMLElement *inner = &element;
        while (const auto *array = elementCast<VMArray>(inner)) {
            if (!row.array)
                row.array = array;
            const std::size_t letter = qMin<std::size_t>(row.repetitions.size(), sizeof(kLetters) - 2);
            row.repetitions.push_back({array->count(), static_cast<quint32>(array->prototype->sizeOf()),
                                       array->countExpression, kLetters[letter]});
            inner = array->prototype.get();
        }
        return inner;
    }

    void nameRow(PageRow &row, const Site &parent)
    {
        QString name = row.name;
        for (std::size_t at = row.repeatedAround; at < row.repetitions.size(); ++at)
            name += u'[' + QString(QChar::fromLatin1(row.repetitions[at].letter)) + u']';
        row.id = m_ids.take(parent.id, name);
        row.path = parent.path.isEmpty() ? name : parent.path + u'.' + name;
        if (m_hasAsm)
            row.asmName = parent.asmPrefix + '_' + asmPiece(row);
    }

    void collectStruct(const VMStruct &structure, PageRow &row, const Site &parent)
    {
        nameRow(row, parent);
        Site site = {row.id, row.path, row.offset, {}, parent.level + 1, row.repetitions};
        if (m_hasAsm) {
            // A structure adds its name to the prefix as it is, and the members of an array one with an underscore.
            site.asmPrefix = parent.asmPrefix;
            if (row.isRepeated() && !site.asmPrefix.endsWith('_'))
                site.asmPrefix += '_';
            site.asmPrefix += asmPiece(row);
        }
        m_rows.push_back(std::move(row));
        collectMembers(structure, site);
    }

    PageIds &m_ids;
    PageRows &m_rows;
    const bool m_hasAsm;
};

} // namespace

PageRows rowsOf(const VMXMLElement &element, const QByteArray &idPrefix, PageIds &ids, bool hasAsm)
{
    PageRows rows;
    RowCollector collector(ids, rows, hasAsm);
    RowCollector::Site site = {idPrefix, {}, 0, element.getName().toUpper().toUtf8(), 0, {}};
    if (const auto *structure = elementCast<VMStruct>(&element)) {
        collector.collectMembers(*structure, site);
        return rows;
    }
    site.offset -= element.offset; // its own address is that of the page
    collector.collect(element, site);
    return rows;
}

QLatin1StringView accessWords(const VMBitField &field)
{
    switch (field.writeMode) {
    case 1:
        return field.readable ? "read, write"_L1 : "write only"_L1;
    case 2:
        return field.readable ? "read, write 1 to set"_L1 : "write 1 to set"_L1;
    case 3:
        return field.readable ? "read, write 1 to clear"_L1 : "write 1 to clear"_L1;
    default:
        return field.readable ? "read only"_L1 : "no access"_L1;
    }
}

QLatin1StringView accessWords(const VMValuable &valuable)
{
    if (valuable.readable)
        return valuable.writable ? "read and write"_L1 : "read only"_L1;
    return valuable.writable ? "write only"_L1 : "no access"_L1;
}

QString ownComment(const VMBitField &field)
{
    if (field.options.optionList.isEmpty())
        return field.getComment();
    const QString &comment = field.getComment();
    // The table begins at the last "<table>", as long as no option has one in its own comment.
    constexpr QLatin1StringView kTable = "<table>"_L1;
    const bool isPlain = std::ranges::none_of(field.options.optionList, [&](const VMBitFieldOption &option) {
        return option.comment.contains(u'<') || option.name.contains(u'<');
    });
    if (isPlain && comment.endsWith("</table>"_L1))
        return comment.left(comment.lastIndexOf(kTable));
    const QString table = field.generateOptionsComment();
    return comment.endsWith(table) ? comment.chopped(table.size()) : comment;
}

QByteArray resetText(const VMValuable &valuable)
{
    const quint32 word = lowBits(valuable.getBitSize());
    quint32 value = 0;
    quint32 open = 0;
    bool hasReset = false;
    for (const auto &field : valuable.bitFields) {
        const quint32 mask = field->getFullValueUnshifted() & word;
        if (!field->hasReset) {
            open |= mask;
            continue;
        }
        hasReset = true;
        value |= shiftLeft(field->resetValue, field->downPos) & mask;
    }
    if (!hasReset)
        return {};
    QByteArray text("0x");
    for (int shift = valuable.getBitSize() - 4; shift >= 0; shift -= 4)
        text += (open >> shift) & 0xF ? 'x' : "0123456789ABCDEF"[(value >> shift) & 0xF];
    return text;
}

} // namespace veldmap
