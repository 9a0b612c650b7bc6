#include "check/document_rules.h"
#include "check/tag_check.h"
#include "text/bit_arithmetic.h"
#include "text/nearest_name.h"
#include "text/words.h"

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// What an author means who has the word of another tag or format in mind.
struct OtherWord {
    TagKind kind;
    QLatin1StringView attribute;
    QLatin1StringView meant;
};
constexpr OtherWord kOtherWords[] = {
    {TagKind::Field, "protect"_L1, "access"_L1},    {TagKind::Field, "reset"_L1, "rst"_L1},
    {TagKind::Field, "default"_L1, "rst"_L1},       {TagKind::Field, "position"_L1, "pos"_L1},
    {TagKind::Field, "range"_L1, "pos"_L1},         {TagKind::PlacedInstance, "base"_L1, "address"_L1},
    {TagKind::Register, "access"_L1, "protect"_L1}, {TagKind::PlacedInstance, "offset"_L1, "address"_L1},
};

QString nearestAttribute(const TagRow &row, QStringView attribute)
{
    const auto known = std::ranges::find_if(kOtherWords, [&](const OtherWord &word) {
        return word.kind == row.kind && spellingDistance(attribute, QString(word.attribute), 1) <= 1;
    });
    if (known != std::end(kOtherWords))
        return known->meant;
    NearestName nearest(attribute);
    for (const AttributeRow &candidate : row.attributes) {
        if (candidate.value != ValueKind::Unused)
            nearest.offer(candidate.name);
    }
    return nearest.name();
}

/// Tells of a value that is none of \a known.
void checkKnown(const TagInContext &at, const AttributeRow &row, QStringView value,
                std::initializer_list<QLatin1StringView> known, const QString &complaint, const DocumentTeller &teller)
{
    if (std::ranges::none_of(known, [&](QLatin1StringView word) { return isWord(value, word); }))
        teller.tell(rules::unknownValue, at, {row.name, shownText(value), complaint});
}

void checkLetters(const TagInContext &at, const AttributeRow &row, QStringView value, QStringView letters,
                  const QString &complaint, const DocumentTeller &teller)
{
    const auto isKnown = [&](QChar c) { return std::ranges::find(letters, c) != letters.end(); };
    if (!std::ranges::all_of(value, isKnown))
        teller.tell(rules::unknownValue, at, {row.name, shownText(value), complaint});
}

/// The number that is written in \a text if it is one, up to 64 bits, which a larger one saturates.
std::optional<quint64> resetLiteral(QStringView text)
{
    int base = 10;
    if (text.startsWith(u'+'))
        text = text.sliced(1);
    if (text.startsWith("0x"_L1, Qt::CaseInsensitive)) {
        base = 16;
        text = text.sliced(2);
    } else if (text.size() > 1 && text.startsWith(u'0')) {
        base = 8;
    }
    if (text.isEmpty())
        return std::nullopt;
    quint64 value = 0;
    for (const QChar c : text) {
        const char16_t folded = c.unicode() | 0x20;
        const int digit = c >= u'0' && c <= u'9'             ? c.unicode() - u'0'
                          : folded >= u'a' && folded <= u'f' ? folded - u'a' + 10
                                                             : 16;
        if (digit >= base)
            return std::nullopt;
        value = value >= (quint64(1) << 59) ? ~quint64(0)
                                            : value * static_cast<quint64>(base) + static_cast<quint64>(digit);
    }
    return value;
}

/// The width of the first piece of the field \a tag, if its positions are plain numbers.
std::optional<int> plainWidth(const Tag &tag)
{
    const QStringView pos = tag.attribute(u"pos");
    if (pos.size() > 5)
        return std::nullopt;
    const qsizetype colon = pos.indexOf(u':');
    bool isNumber = false;
    bool areNumbers = false;
    const int up = (colon < 0 ? pos : pos.first(colon)).toInt(&isNumber);
    const int down = (colon < 0 ? pos : pos.sliced(colon + 1)).toInt(&areNumbers);
    if (!isNumber || !areNumbers)
        return std::nullopt;
    const int width = qAbs(up - down) + 1;
    const int piece = tag.attribute(u"cut").toInt();
    return piece > 0 && piece < width ? piece : width;
}

void checkReset(const TagInContext &at, QStringView text, const DocumentTeller &teller)
{
    constexpr QLatin1StringView kWords[] = {"no"_L1, "all1"_L1, "-"_L1, ""_L1};
    const bool isNumber = !text.isEmpty() && text.front() >= u'0' && text.front() <= u'9';
    if (!isNumber && std::ranges::any_of(kWords, [&](QLatin1StringView word) { return isWordOfAnyCase(text, word); }))
        return;
    const std::optional<quint64> value = resetLiteral(text.trimmed());
    if (!value) {
        teller.tell(rules::unknownValue, at,
                    {u"rst"_s, shownText(text),
                     u"is neither a number (decimal, 0x, or octal after a 0) nor all1 or no, and reads as 0"_s});
        return;
    }
    if (*value > 0xFFFFFFFFu) {
        teller.tell(rules::numberTooLarge, at, {shownText(text), u"rst"_s, u"0"_s});
        return;
    }
    if (*value <= 1) // which fits any field
        return;
    const std::optional<int> width = plainWidth(at.tag);
    if (width && *value > lowBits(*width))
        teller.tell(
            rules::resetCut, at,
            {shownText(text), QString::number(*width), u"0x"_s + QString::number(*value & lowBits(*width), 16)});
}

} // namespace

void checkUnknownAttribute(const TagInContext &at, QStringView attribute, const DocumentTeller &teller)
{
    const QString nearest = nearestAttribute(at.row, attribute);
    teller.tell(
        rules::unknownAttribute, at,
        {shownText(attribute), at.row.name, nearest.isEmpty() ? QString() : u"; did you mean '%1'?"_s.arg(nearest)});
}

void checkWord(const TagInContext &at, const AttributeRow &row, QStringView value, const DocumentTeller &teller)
{
    switch (row.value) {
    case ValueKind::Flag:
        checkKnown(at, row, value, {"yes"_L1, "no"_L1}, u"is neither yes nor no, and counts as no"_s, teller);
        break;
    case ValueKind::Display:
        checkKnown(at, row, value, {"hex"_L1, "bin"_L1, "dec"_L1, "notdef"_L1},
                   u"is none of hex, bin and dec, and counts as dec"_s, teller);
        break;
    case ValueKind::Protection:
        checkLetters(at, row, value, u"rw", u"has letters other than r and w, which do not count"_s, teller);
        break;
    case ValueKind::Access:
        checkLetters(at, row, value, u"rwsc", u"has letters other than r, w, s and c, which do not count"_s, teller);
        break;
    case ValueKind::Reset:
        checkReset(at, value, teller);
        break;
    case ValueKind::CutDetail:
        if (const QStringView cut = at.tag.attribute(u"cut"); cut.isNull() || cut == "no"_L1)
            teller.tell(rules::unusedAttribute, at, {row.name, u", since the field is not cut"_s});
        break;
    case ValueKind::Unused:
        teller.tell(rules::unusedAttribute, at, {row.name, QString()});
        break;
    case ValueKind::Name:
    case ValueKind::RawName:
    case ValueKind::Text:
    case ValueKind::Number:
    case ValueKind::CNumber:
    case ValueKind::Address:
    case ValueKind::Condition:
    case ValueKind::Count:
        break;
    }
}

} // namespace veldmap
