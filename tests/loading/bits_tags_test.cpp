// The positions, values and pieces of bitfields.

#include "support/loaded.h"

#include "model/aggregates.h"
#include "model/valuable.h"

using namespace Qt::StringLiterals;

namespace {

/// Where a field lies in its register and in the packed word, as "up:down (up text:down text)".
QString placeOf(const VMBitField &field)
{
    return u"%1:%2 (%3:%4)"_s.arg(QString::number(field.upPos), QString::number(field.downPos), field.upPosExpression,
                                  field.downPosExpression);
}

QString packedPlaceOf(const VMBitField &field)
{
    return u"%1:%2 (%3:%4)"_s.arg(QString::number(field.physicalUpPos), QString::number(field.physicalDownPos),
                                  field.physicalUpPosExpression, field.physicalDownPosExpression);
}

QString optionsOf(const VMBitFieldOptions &options)
{
    QString text;
    for (const VMBitFieldOption &option : options.optionList)
        text += u" %1=%2"_s.arg(option.name, QString::number(option.value));
    return text + (options.hasDefault ? u" default"_s : QString()) + (options.hasMask ? u" mask"_s : QString()) +
           (options.hasShift ? u" shift"_s : QString());
}

QString register0(const Loaded &soc, const QStringList &words)
{
    const VMValuable &reg = *elementCast<VMValuable>(soc.type<VMStruct>(u"m"_s).memberList.at(0).get());
    const bool isPacked = words.first() == u"packed"_s;
    QString text;
    for (const auto &field : reg.bitFields) {
        EXPECT_EQ(field->parent, &reg);
        text += field->getName() + u' ' + (isPacked ? packedPlaceOf(*field) : placeOf(*field));
        if (!isPacked)
            text += u' ' + field->getAccessString() + u" reset "_s + field->getResetString(DISPLAY_DEC) +
                    optionsOf(field->options) + (field->comment.isEmpty() ? QString() : u" // "_s + field->comment);
        text += u'\n';
    }
    for (const auto &group : reg.bitGroups) {
        text += u"group "_s + group->name + u':';
        for (const VMBitField *field : *group)
            text += u' ' + field->getName() + u'@' + field->downPosExpression;
        text += u'\n';
    }
    return isPacked ? text + u"whole "_s + reg.physicalName + u'\n' : text;
}

} // namespace

TEST(Bits, PositionsAccessResetPiecesAndOptions)
{
    expectCases(u"loading/bits.txt"_s, register0,
                u"<var name='BASE' value='4'/><enum name='abc'><entry name='A' value='9'/><entry name='B'/>"_s
                "<entry name='C'/></enum><module name='m'><reg name='r'>%1</reg></module>");
}
