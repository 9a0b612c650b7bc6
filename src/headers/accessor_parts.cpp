#include "headers/accessor_parts.h"

#include "headers/comment_lines.h"
#include "text/lines.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace veldmap::accessors {

namespace {

/// What every way begins with: the block that a function is given.
constexpr QLatin1StringView kBlock = "*block"_L1;

/// The bits of the fields of \a valuable for which \a isWanted holds.
template <typename Predicate>
quint32 bitsOf(const VMValuable &valuable, const Predicate &isWanted)
{
    quint32 mask = 0;
    for (const auto &field : valuable.bitFields)
        mask |= isWanted(*field) ? field->getFullValueUnshifted() : 0;
    return mask;
}

QString shownBits(const VMBitField &field)
{
    return field.upPos == field.downPos
               ? "bit "_L1 + QString::number(field.upPos)
               : "bits "_L1 + QString::number(field.upPos) + u':' + QString::number(field.downPos);
}

/// The comment of \a field without the table of its options, which stand in an enum.
QString ownComment(const VMBitField &field)
{
    const QString table = field.generateOptionsComment();
    return !table.isEmpty() && field.comment.endsWith(table) ? field.comment.chopped(table.size()) : field.comment;
}

} // namespace

QString hexLiteral(quint32 value)
{
    return "0x"_L1 + hex8(value) + u'U';
}

bool setsOrClears(const VMBitField &field)
{
    return field.writeMode >= 2;
}

Way Way::member(const QString &memberName) const
{
    Way way = *this;
    if (memberName.isEmpty())
        return way;
    way.name += u'_' + memberName.toLower();
    way.shown += (shown.isEmpty() ? ""_L1 : "."_L1) + memberName;
    way.expression = expression == kBlock ? "block->"_L1 + memberName : expression + u'.' + memberName;
    return way;
}

Way Way::at(int count) const
{
    Way way = *this;
    way.counts += count;
    way.shown += "[]"_L1;
    way.expression = (expression == kBlock ? u"(*block)"_s : expression) + u'[' + indexName(counts.size()) + u']';
    return way;
}

QString Way::indexes() const
{
    QString text;
    for (qsizetype at = 0; at < counts.size(); ++at)
        text += ", uint32_t "_L1 + indexName(at);
    return text;
}

QString Way::indexName(qsizetype at)
{
    return at == 0 ? u"index"_s : "index"_L1 + QString::number(at + 1);
}

Register::Register(const VMValuable &valuable, const Way &way, const QString &pointer)
    : m_valuable(valuable), m_way(way), m_bits(valuable.getBitSize()), m_pointer(pointer),
      m_type((valuable.isSigned() ? "int"_L1 : "uint"_L1) + QString::number(m_bits) + "_t"_L1)
{
}

QString Register::shown() const
{
    return commentWords(m_way.shown.isEmpty() ? m_way.name : m_way.shown);
}

QString Register::asWord(const QString &value) const
{
    return isWord() ? value : "(uint32_t)"_L1 + value;
}

QString Register::fromWord(const QString &word) const
{
    return isWord() ? word : u'(' + m_type + ")("_L1 + word + u')';
}

bool Register::isWritable() const
{
    return m_valuable.writable && !m_valuable.cKeywords.contains("const"_L1);
}

quint32 Register::actionBits() const
{
    return cut(bitsOf(m_valuable, setsOrClears));
}

quint32 Register::keptBits() const
{
    return cut(bitsOf(m_valuable, [](const VMBitField &field) { return field.writeMode == 1; }));
}

QString Register::readParameters() const
{
    return "const "_L1 + m_pointer + " *block"_L1 + m_way.indexes();
}

QString Register::writeParameters() const
{
    return m_pointer + " *block"_L1 + m_way.indexes();
}

QString Register::readExpression() const
{
    return lvalue("const volatile "_L1);
}

QString Register::writeExpression() const
{
    return lvalue("volatile "_L1);
}

bool Register::isWord() const
{
    return m_type == "uint32_t"_L1;
}

/// An alias of a register with fields is a structure of bit-fields in C. Its word is reached by its address.
QString Register::lvalue(QLatin1StringView qualifiers) const
{
    const bool isStructure = !m_valuable.typedefName.isEmpty() && !m_valuable.bitFields.empty();
    if (!isStructure)
        return m_way.expression;
    const QString address = m_way.expression == kBlock ? u"block"_s : u'&' + m_way.expression;
    return "*("_L1 + qualifiers + m_type + " *)("_L1 + qualifiers + "void *)"_L1 + address;
}

Part partOf(const VMBitField &field, const Register &of)
{
    Part part;
    part.name = field.getName().toLower();
    part.comment = ownComment(field);
    part.shownBits = shownBits(field) + ", "_L1 + field.getAccessString();
    part.mask = field.downPos < 0 ? 0 : of.cut(field.getFullValueUnshifted());
    part.shift = field.downPos;
    part.isReadable = of.isReadable(field);
    part.isWritable = of.isWritable(field);
    const bool hasNegativeOption =
        std::ranges::any_of(field.options.optionList, [](const VMBitFieldOption &option) { return option.value < 0; });
    part.hasSignedView = of.valuable().isSigned() || hasNegativeOption;
    part.field = &field;
    return part;
}

Part partOf(const VMBitGroup &group, const Register &of)
{
    Part part;
    part.name = group.name.toLower();
    QStringList names;
    for (const VMBitField *field : group)
        names += field->getName();
    part.shownBits = "a group of "_L1 + names.join(", "_L1);
    part.mask = group.getShift() < 0 ? 0 : of.cut(group.getFullValueUnshifted());
    part.shift = group.getShift();
    part.isReadable = std::ranges::all_of(group, [&](const VMBitField *field) { return of.isReadable(*field); });
    part.isWritable = std::ranges::all_of(group, [&](const VMBitField *field) { return of.isWritable(*field); });
    return part;
}

} // namespace veldmap::accessors
