#include "loading/archive_reader.h"

#include "findings/limits.h"
#include "loading/rules.h"
#include "model/valuable.h"
#include "text/bit_arithmetic.h"
#include "text/literals.h"
#include "text/plain_number.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace veldmap {

/// The attributes of a `bits` tag. Words that only decide something stay in the document.
struct ArchiveReader::BitsAttributes {
    BitsAttributes(const Tag &tag, SharedTexts &texts)
        : name(texts.ofName(tag.attribute(u"name"))), access(tag.attribute(u"access")), pos(tag.attribute(u"pos")),
          reset(wordOf(tag, u"rst", u"no")), display(displayOf(wordOf(tag, u"display", u"dec"))),
          cut(wordOf(tag, u"cut", u"no")), cutEnum(readText(tag, u"cutenum")),
          cutStart(readText(tag, u"cutstart", u"0"_s)), cutPrefix(readName(tag, u"cutprefix"))
    {
    }

    bool hasReset() const
    {
        return !reset.isEmpty() && reset != "-"_L1 &&
               (reset.size() != 2 || reset.compare("no"_L1, Qt::CaseInsensitive) != 0);
    }
    /// The mode of the strongest letter: clear before set before write.
    int writeMode() const { return hasAccess(u'c') ? 3 : hasAccess(u's') ? 2 : hasAccess(u'w') ? 1 : 0; }
    bool hasAccess(char16_t letter) const { return std::ranges::find(access, letter) != access.end(); }

    QString name;
    QStringView access;
    QStringView pos;
    QStringView reset;
    DisplayType display;
    QStringView cut;
    QString cutEnum;
    QString cutStart;
    QString cutPrefix;

private:
    static QStringView wordOf(const Tag &tag, QStringView attribute, QStringView missing)
    {
        const QStringView word = tag.attribute(attribute);
        return word.isNull() ? missing : word;
    }
};

/// A position of a field, as text and as number.
struct ArchiveReader::BitPosition {
    QString upText;
    int up = 0;
    QString downText;
    int down = 0;

    qint64 width() const { return qint64(up) - down + 1; }
};

/// How a field is cut into equal pieces, upwards from its lowest bit.
struct ArchiveReader::BitsCut {
    BitPosition whole;
    int pieces = 1;
    int pieceWidth = 0;
    int start = 0;
    QString prefix;
    const VMEnum *names = nullptr;

    QString nameOf(int piece) const
    {
        const int index = wrappingAdd(start, piece);
        const QString tail = names ? names->getEntryName(index) : QString::number(index);
        return prefix.isEmpty() ? tail : prefix + u'_' + tail;
    }

    /// About the characters of the names and positions of all pieces.
    qint64 charactersOfPieces() const { return (pieces - 1) * (prefix.size() + 2 * whole.downText.size()); }

    /// The position texts of a piece. A plain number is counted on; any other text is kept and added to.
    BitPosition textsOf(int piece) const
    {
        const int low = wrappingMultiply(pieceWidth, piece);
        const int high = wrappingSubtract(wrappingAdd(low, pieceWidth), 1);
        BitPosition position;
        bool plain = false;
        whole.downText.toInt(&plain);
        if (plain) {
            position.downText = decimalText(wrappingAdd(whole.down, low));
            position.upText = decimalText(wrappingAdd(whole.down, high));
        } else {
            position.downText = whole.downText + u'+' + QString::number(low);
            position.upText = whole.downText + u'+' + QString::number(high);
        }
        if (piece == 0)
            position.downText = whole.downText;
        return position;
    }
};

namespace {

/// The number that \a text writes in decimal, hexadecimal (0x) or octal (0); 0 for any other text.
quint32 resetNumber(QStringView text)
{
    const bool mayBeOctal = text.size() > 1 && text[0] == u'0' && text[1] != u'x';
    if (const std::optional<int> number = mayBeOctal ? std::nullopt : plainNumber(text))
        return static_cast<quint32>(*number);
    QStringView digits = text.trimmed();
    if (digits.startsWith(u'+'))
        digits = digits.sliced(1);
    if (digits.startsWith("0b"_L1, Qt::CaseInsensitive)) // which QString reads as well
        return 0;
    return text.toUInt(nullptr, 0);
}

quint32 resetValueOf(QStringView reset, qint64 width)
{
    const bool allOnes = reset.compare("all1"_L1, Qt::CaseInsensitive) == 0;
    return (allOnes ? 0xFFFFFFFFu : resetNumber(reset)) & lowBits(width);
}

} // namespace

bool ArchiveReader::readBits(const Tag &tag, VMValuable &valuable, VMXMLArchive &archive)
{
    m_builder.countDeclared();
    if (!checkName(tag, archive))
        return false;
    const BitsAttributes attributes(tag, m_builder.texts());
    if (attributes.name.isEmpty())
        return fail(tag, archive, rules::fieldWithoutName, {valuable.getName()});
    return readNamedBits(attributes, tag, valuable, archive) || loseField(attributes.name);
}

bool ArchiveReader::readNamedBits(const BitsAttributes &attributes, const Tag &tag, VMValuable &valuable,
                                  VMXMLArchive &archive)
{
    const QString &name = attributes.name;
    if (attributes.pos.isEmpty())
        return fail(tag, archive, rules::fieldWithoutPosition, {valuable.getName(), name});
    if (attributes.pos.size() > limits::kPositionCharacters)
        return fail(tag, archive, rules::positionTooLong,
                    {valuable.getName(), name, QString::number(limits::kPositionCharacters)});
    BitsCut cut;
    if (!readPosition(attributes, tag, valuable, archive, cut.whole) ||
        !readCut(attributes, tag, valuable, archive, cut))
        return false;
    if (valuable.bitFields.size() + static_cast<std::size_t>(cut.pieces) > limits::kBitFields)
        return fail(tag, archive, rules::tooManyFields, {valuable.getName(), QString::number(limits::kBitFields)});
    if (const Refusal refused = m_builder.countCopies(cut.pieces - 1))
        return fail(tag, archive, refused);
    if (const Refusal refused = m_builder.countText(cut.charactersOfPieces()))
        return fail(tag, archive, refused);

    BitPosition first = cut.whole;
    std::unique_ptr<VMBitGroup> group;
    if (cut.pieces > 1) {
        first = cut.textsOf(0);
        if (!evaluatePosition(first, name, tag, valuable, archive))
            return false;
        group = std::make_unique<VMBitGroup>(name, &valuable);
        group->source = sourceOf(tag);
    }
    const quint32 reset = attributes.hasReset() ? resetValueOf(attributes.reset, first.width()) : 0;
    auto field = std::make_unique<VMBitField>(
        group ? cut.nameOf(0) : name, attributes.hasAccess(u'r'), attributes.writeMode(), first.upText, first.up,
        first.downText, first.down, static_cast<int>(reset), attributes.hasReset(), attributes.display);
    field->source = sourceOf(tag);
    if (!readBitsChildren(tag, name, *field, archive))
        return false;
    return addPieces(std::move(field), std::move(group), cut, name, tag, valuable, archive);
}

bool ArchiveReader::readPosition(const BitsAttributes &attributes, const Tag &tag, const VMValuable &valuable,
                                 const VMXMLArchive &archive, BitPosition &position)
{
    // The split comes at the last colon that has text on both sides.
    const QStringView pos = attributes.pos;
    const qsizetype colon = pos.size() < 3 ? -1 : pos.lastIndexOf(u':', pos.size() - 2);
    const bool isRange = colon > 0;
    position.upText = m_builder.texts().of(isRange ? pos.first(colon) : pos);
    position.downText = isRange ? m_builder.texts().of(pos.sliced(colon + 1)) : position.upText;
    if (!evaluatePosition(position, attributes.name, tag, valuable, archive))
        return false;
    if (position.up < position.down) {
        std::swap(position.up, position.down);
        std::swap(position.upText, position.downText);
    }
    return true;
}

bool ArchiveReader::evaluatePosition(BitPosition &position, const QString &name, const Tag &tag,
                                     const VMValuable &valuable, const VMXMLArchive &archive)
{
    const auto evaluateText = [&](const QString &text, int &number) {
        const Evaluated result = evaluate(text, archive);
        number = result.value;
        return !result.failed || failEvaluation(tag, archive, rules::positionExpression,
                                                {valuable.getName(), name, text, result.message}, result);
    };
    if (!evaluateText(position.upText, position.up))
        return false;
    if (position.downText == position.upText) {
        position.down = position.up;
        return true;
    }
    return evaluateText(position.downText, position.down);
}

bool ArchiveReader::readCut(const BitsAttributes &attributes, const Tag &tag, const VMValuable &valuable,
                            const VMXMLArchive &archive, BitsCut &cut)
{
    const QString &name = attributes.name;
    const Evaluated start = evaluate(attributes.cutStart, archive);
    if (start.failed)
        return failEvaluation(tag, archive, rules::cutStart,
                              {valuable.getName(), name, attributes.cutStart, start.message}, start);
    if (attributes.cut != "no"_L1) {
        const qint64 width = cut.whole.width();
        cut.pieceWidth = attributes.cut.toInt();
        if (cut.pieceWidth <= 0)
            return fail(tag, archive, rules::cutSize, {valuable.getName(), name});
        if (width % cut.pieceWidth != 0)
            return fail(tag, archive, rules::cutUneven, {valuable.getName(), name});
        if (width / cut.pieceWidth > limits::kCutPieces)
            return fail(tag, archive, rules::cutTooFine,
                        {valuable.getName(), name, QString::number(limits::kCutPieces)});
        cut.pieces = static_cast<int>(width / cut.pieceWidth);
    }
    if (!attributes.cutEnum.isEmpty()) {
        cut.names = m_builder.findEnum(attributes.cutEnum, archive);
        if (!cut.names)
            return failUnknown(attributes.cutEnum, tag, archive, rules::cutEnum, {name, attributes.cutEnum});
    }
    cut.start = start.value;
    cut.prefix = attributes.cutPrefix;
    return true;
}

bool ArchiveReader::readBitsChildren(const Tag &tag, const QString &name, VMBitField &field, VMXMLArchive &archive)
{
    QString comment;
    for (const Tag &child : ChildTags(tag)) {
        const QStringView childName = child.name();
        if (childName == "options"_L1) {
            if (!readOptions(child, field, archive) && !m_goesOn)
                return false;
        } else if (!takeComment(child, comment)) {
            fail(child, archive, rules::foreignTagInField, {name, childName.toString()});
            if (!m_goesOn)
                return false;
        }
    }
    const QString options = field.generateOptionsComment();
    field.comment = m_builder.texts().of(options.isEmpty() ? std::move(comment) : comment + options);
    const Refusal refused = m_builder.countText(options.size());
    return !refused || fail(tag, archive, refused);
}

bool ArchiveReader::addPieces(std::unique_ptr<VMBitField> first, std::unique_ptr<VMBitGroup> group, const BitsCut &cut,
                              const QString &name, const Tag &tag, VMValuable &valuable, const VMXMLArchive &archive)
{
    std::vector<std::unique_ptr<VMBitField>> pieces;
    pieces.push_back(std::move(first));
    for (int piece = 1; piece < cut.pieces; ++piece) {
        BitPosition position = cut.textsOf(piece);
        if (!evaluatePosition(position, name, tag, valuable, archive))
            return false;
        pieces.push_back(std::make_unique<VMBitField>(*pieces.front()));
        pieces.back()->setName(m_builder.texts().of(cut.nameOf(piece)));
        pieces.back()->setPositions(position.upText, position.up, position.downText, position.down);
    }
    for (auto &piece : pieces) {
        if (group)
            group->addBitField(piece.get());
        valuable.addBitField(piece.release());
    }
    if (group)
        valuable.addBitGroup(group.release());
    return true;
}

} // namespace veldmap
