#include "cli/element_text.h"

#include "text/lines.h"
#include "model/aggregates.h"
#include "model/valuable.h"

using namespace Qt::StringLiterals;

// UART0                                   0x40034000 uart, 20 bytes
//   ctrl                                  0x40034000 Reg32 rw, 4 bytes
//     speed                               3:1        rw reset 0

namespace veldmap::cli {

namespace {

constexpr int kPlaceColumn = 40;
constexpr int kTypeColumn = 51;
constexpr int kNoteColumn = 74;

QString margin(int level)
{
    return QString(2 * level, u' ');
}

QString positionOf(const VMBitField &field)
{
    const QString down = QString::number(field.downPos);
    return field.upPos == field.downPos ? down : QString::number(field.upPos) + u':' + down;
}

QString counted(int count, QLatin1StringView noun)
{
    return QString::number(count) + u' ' + noun + (count == 1 ? u""_s : u"s"_s);
}

QString typeOf(const VMXMLElement &element)
{
    QString words = element.getTypeString();
    if (words.isEmpty() && element.isStruct())
        words = u"struct"_s;
    if (const auto *valuable = elementCast<VMValuable>(&element))
        words += u' ' + valuable->getProtectString();
    if (!words.isEmpty())
        words += ", "_L1;
    return words + counted(element.sizeOf(), "byte"_L1);
}

/// A line up to the type, and the note in its column behind it.
void appendNoted(QString &text, const QString &line, const QString &note)
{
    if (note.isEmpty())
        appendLine(text, line);
    else
        appendLine(text, line, Column{kNoteColumn}, note);
}

} // namespace

QString OptionNotes::ofElement(const VMXMLElement &) const
{
    return {};
}

QString OptionNotes::ofField(const VMBitField &field) const
{
    QStringList options;
    for (const VMBitFieldOption &option : field.options.optionList)
        options += option.name + u'=' + QString::number(option.value);
    return options.join(u' ');
}

void appendField(QString &text, const VMBitField &field, int level, const ElementNotes &notes)
{
    QString line;
    appendLine(line, margin(level), field.getName(), Column{kPlaceColumn}, positionOf(field), Column{kTypeColumn},
               field.getAccessString(), " reset "_L1, field.getResetString(DISPLAY_DEFAULT));
    line.chop(1);
    appendNoted(text, line, notes.ofField(field));
}

void appendFieldAlone(QString &text, const VMBitField &field, const ElementNotes &notes)
{
    QString line;
    appendLine(line, field.getPath(), Column{kPlaceColumn}, field.getAddressString(), Column{kTypeColumn},
               positionOf(field), u" ", field.getAccessString(), u", ", counted(field.getBitSize(), "bit"_L1),
               ", reset "_L1, field.getResetString(DISPLAY_DEFAULT));
    line.chop(1);
    appendNoted(text, line, notes.ofField(field));
}

void appendElement(QString &text, const VMXMLElement &element, const QString &name, int level, int depth,
                   const ElementNotes &notes)
{
    QString line;
    appendLine(line, margin(level), name, Column{kPlaceColumn}, element.getAddressString(), Column{kTypeColumn},
               typeOf(element));
    line.chop(1);
    appendNoted(text, line, notes.ofElement(element));
    if (depth <= 0)
        return;
    const auto appendMembers = [&](const auto &members) {
        for (const auto &member : members)
            appendElement(text, *member, member->getName(), level + 1, depth - 1, notes);
    };
    if (const auto *valuable = elementCast<VMValuable>(&element)) {
        for (const auto &field : valuable->bitFields)
            appendField(text, *field, level + 1, notes);
    } else if (const auto *structure = elementCast<VMStruct>(&element)) {
        appendMembers(structure->memberList);
    } else if (const auto *array = elementCast<VMArray>(&element)) {
        appendMembers(array->memberList);
    }
}

} // namespace veldmap::cli
