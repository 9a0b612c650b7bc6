#include "import/description_text.h"

#include "xml/tag_document.h"

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

namespace veldmap {

using namespace plan;

namespace {

constexpr int kColumns = 120;

QString attribute(QLatin1StringView name, const QString &value)
{
    QString text;
    text.reserve(name.size() + value.size() + 4);
    text += u' ';
    text += name;
    text += "=\""_L1;
    text += encodedText(value, true);
    text += u'"';
    return text;
}

quint64 roundedUp(quint64 bytes, int alignment)
{
    return (bytes + quint64(alignment) - 1) / quint64(alignment) * quint64(alignment);
}

QString tagOf(const Member &member)
{
    switch (member.kind) {
    case Member::Kind::Structure:
        return u"struct"_s;
    case Member::Kind::Memory:
        return u"memory"_s;
    case Member::Kind::Register:
        return u"reg"_s + QString::number(member.bytes * 8);
    }
    Q_UNREACHABLE();
}

/// How a value of a field is written: as a person counts bits where it is more than a few.
QString valueText(quint64 value)
{
    constexpr quint64 kDecimal = 0x7FFFFFFF; // that expressions read
    return value > kDecimal ? "0x"_L1 + QString::number(value, 16).toUpper() : QString::number(value);
}

} // namespace

DescriptionText::DescriptionText(const QString &path, const QString &allowed)
{
    m_file.path = path;
    line(0, u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>"_s);
    if (!allowed.isEmpty())
        allow(0, allowed);
    line(0, u"<archive>"_s);
}

void DescriptionText::line(int level, const QString &text, const chip::At &at)
{
    m_file.text.append(2 * level, ' ');
    m_file.text += text.toUtf8();
    m_file.text += '\n';
    m_file.sources.append(at);
}

void DescriptionText::comment(int level, const QString &markup, const chip::At &at)
{
    if (markup.isEmpty())
        return;
    constexpr qsizetype kTags = 19; // "<comment>" and "</comment>"
    if (2 * level + markup.size() + kTags <= kColumns) {
        line(level, "<comment>"_L1 + markup + "</comment>"_L1, at);
        return;
    }
    // A long one is broken between words, which makes no difference to what it says.
    constexpr qsizetype kEnd = 10; // of "</comment>"
    QString text = u"<comment>"_s;
    bool isFirst = true;
    for (const QStringView word : QStringView(markup).split(u' ')) {
        if (!isFirst && 2 * level + text.size() + 1 + word.size() + kEnd > kColumns) {
            line(level, text, at);
            text = u"  "_s + word.toString();
        } else {
            if (!isFirst)
                text += u' ';
            text += word;
        }
        isFirst = false;
    }
    line(level, text + "</comment>"_L1, at);
}

void DescriptionText::allow(int level, const QString &rules)
{
    line(level, "<!-- veldmap: allow "_L1 + rules + " -->"_L1);
}

void DescriptionText::includes(const QStringList &files)
{
    for (const QString &file : files) {
        if (file == kInterruptsFile)
            allow(1, u"unused-file"_s);
        line(1, "<include"_L1 + attribute("file"_L1, file) + "/>"_L1);
    }
}

void DescriptionText::tag(int level, const QString &name, const QString &attributes, const QString &markup,
                          const chip::At &at)
{
    const QString start = u'<' + name + attributes;
    if (markup.isEmpty()) {
        line(level, start + "/>"_L1, at);
        return;
    }
    const QString whole = start + "><comment>"_L1 + markup + "</comment></"_L1 + name + u'>';
    if (2 * level + whole.size() <= kColumns) {
        line(level, whole, at);
        return;
    }
    line(level, start + u'>', at);
    comment(level + 1, markup, at);
    line(level, "</"_L1 + name + u'>', at);
}

void DescriptionText::variable(const QString &name, const QString &value, const QString &comment, const chip::At &at)
{
    tag(1, u"var"_s, attribute("name"_L1, name) + attribute("value"_L1, value), comment, at);
}

void DescriptionText::enumeration(const SharedEnum &shared)
{
    line(1, "<enum"_L1 + attribute("name"_L1, shared.name) + u'>', shared.at);
    quint64 next = 0;
    for (const Option &entry : shared.entries) {
        const QString value = entry.value == next ? QString() : attribute("value"_L1, valueText(entry.value));
        tag(2, u"entry"_s, attribute("name"_L1, entry.name) + value, entry.comment, entry.at);
        next = entry.value + 1;
    }
    line(1, u"</enum>"_s, shared.at);
}

void DescriptionText::module(const Type &type, const QHash<quint32, QString> &counts)
{
    const QString category = type.category.isEmpty() ? QString() : attribute("category"_L1, type.category);
    const QString tag = type.isMemory ? u"typedef"_s : u"module"_s;
    line(1, u'<' + tag + attribute("name"_L1, type.name) + category + u'>', type.at);
    comment(2, type.comment, type.at);
    members(type.members, 2, counts, 0);
    line(1, "</"_L1 + tag + u'>', type.at);
}

void DescriptionText::members(const std::vector<Member> &members, int level, const QHash<quint32, QString> &counts,
                              quint64 end)
{
    int alignment = 1;
    quint64 last = end;
    for (const Member &one : members) {
        alignment = std::max(alignment, one.alignment);
        last = std::max(last, one.end());
    }
    // In C a hole of words is one of words, which may ask for more than the members do.
    const int unit = level > 2 || last % 4 != 0 ? alignment : 4;
    quint64 at = 0;
    for (const Member &one : members) {
        // What the language leaves out by itself needs no hole.
        if (roundedUp(at, one.alignment) != one.offset)
            hole(one.offset - at, at, unit, level);
        member(one, level, counts);
        at = one.offset + (one.count > 0 ? one.count * one.step : one.bytes);
    }
    if (end > roundedUp(at, alignment))
        hole(end - at, at, unit, level);
}

void DescriptionText::hole(quint64 bytes, quint64 at, int unit, int level)
{
    for (const int larger : {4, 2}) {
        if (larger <= unit || bytes % quint64(larger) != 0 || at % quint64(larger) != 0)
            continue;
        if (bytes > quint64(unit))
            hole(bytes - quint64(unit), at, unit, level);
        bytes = quint64(unit);
        break;
    }
    constexpr quint64 kMost = quint64(std::numeric_limits<int>::max()) / 32 * 4; // whole words
    for (; bytes > 0; bytes -= std::min(bytes, kMost)) {
        const quint64 one = std::min(bytes, kMost);
        line(level, one == 4 ? u"<hole/>"_s : "<hole"_L1 + attribute("size"_L1, QString::number(one * 8)) + "/>"_L1);
    }
}

void DescriptionText::member(const Member &member, int level, const QHash<quint32, QString> &counts)
{
    const QString name = tagOf(member);
    QString attributes = attribute("name"_L1, member.name);
    if (member.kind == Member::Kind::Memory)
        attributes += attribute("size"_L1, QString::number(member.bytes));
    if (!member.protect.isEmpty())
        attributes += attribute("protect"_L1, member.protect);
    if (member.count > 0)
        attributes += attribute("count"_L1, counts.value(member.count, QString::number(member.count)));
    if (member.fields.empty() && member.members.empty()) {
        tag(level, name, attributes, member.comment, member.at);
        return;
    }
    line(level, u'<' + name + attributes + u'>', member.at);
    comment(level + 1, member.comment, member.at);
    for (const Field &one : member.fields)
        field(one, level + 1);
    if (!member.members.empty())
        members(member.members, level + 1, counts, member.count > 0 ? member.step : 0);
    line(level, "</"_L1 + name + u'>', member.at);
}

void DescriptionText::field(const Field &field, int level)
{
    const int highest = field.lowest + field.width - 1;
    QString position = QString::number(highest);
    if (field.width > 1)
        position += u':' + QString::number(field.lowest);
    QString attributes = attribute("name"_L1, field.name) + attribute("pos"_L1, position);
    if (!field.access.isEmpty())
        attributes += attribute("access"_L1, field.access);
    if (!field.reset.isEmpty())
        attributes += attribute("rst"_L1, field.reset);
    if (field.cut > 0) {
        attributes += attribute("cut"_L1, QString::number(field.cut)) + attribute("cutprefix"_L1, field.cutPrefix);
        if (field.cutStart > 0)
            attributes += attribute("cutstart"_L1, QString::number(field.cutStart));
    }
    if (field.options.empty() && field.linkedEnum.isEmpty()) {
        tag(level, u"bits"_s, attributes, field.comment, field.at);
        return;
    }
    line(level, "<bits"_L1 + attributes + u'>', field.at);
    comment(level + 1, field.comment, field.at);
    options(field, level + 1);
    line(level, u"</bits>"_s, field.at);
}

void DescriptionText::options(const Field &field, int level)
{
    // Where values have no names, the macro for any value is there too.
    const int width = field.cut > 0 ? field.cut : field.width;
    const bool isComplete = width < 16 && field.options.size() >= (std::size_t(1) << width);
    if (!field.linkedEnum.isEmpty()) {
        const QString start = "<options"_L1 + attribute("linkenum"_L1, field.linkedEnum);
        line(level, isComplete ? start + "/>"_L1 : start + "><default/></options>"_L1, field.at);
        return;
    }
    line(level, isComplete ? u"<options>"_s : u"<options><default/>"_s, field.at);
    for (const Option &option : field.options)
        tag(level + 1, u"option"_s, attribute("name"_L1, option.name) + attribute("value"_L1, valueText(option.value)),
            option.comment, option.at);
    line(level, u"</options>"_s, field.at);
}

WrittenFile DescriptionText::finish()
{
    line(0, u"</archive>"_s);
    return std::move(m_file);
}

} // namespace veldmap
