#include "site/page_names.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

constexpr qsizetype kLongestName = 120; // of the 255 bytes that file systems take

bool isPlain(QChar character)
{
    const char16_t c = character.unicode();
    return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9') || c == u'_' || c == u'-' ||
           c == u'.';
}

/// Names that some systems give to devices, whatever stands behind a dot.
bool isDevice(const QString &lower)
{
    constexpr QLatin1StringView kDevices[] = {"con"_L1, "prn"_L1, "aux"_L1, "nul"_L1};
    const QString stem = lower.section(u'.', 0, 0);
    const bool isPort = stem.size() == 4 && (stem.startsWith("com"_L1) || stem.startsWith("lpt"_L1)) &&
                        stem.back() >= u'0' && stem.back() <= u'9';
    return isPort || std::ranges::find(kDevices, stem) != std::end(kDevices);
}

QString safeName(const QString &wanted)
{
    QString name = wanted.left(kLongestName);
    std::ranges::replace_if(
        name, [](QChar c) { return !isPlain(c); }, u'_');
    if (name.isEmpty() || name.startsWith(u'.') || name.startsWith(u'-') || isDevice(name.toLower()))
        name.prepend(u'_');
    return name;
}

} // namespace

QString PageNames::take(const QString &wanted)
{
    const QString safe = safeName(wanted);
    QString name = safe;
    if (m_taken.contains(name.toLower())) {
        int &copy = m_copies.insert(safe.toLower(), qMax(1, m_copies.value(safe.toLower()))).value();
        do
            name = safe + u'~' + QString::number(++copy);
        while (m_taken.contains(name.toLower()));
    }
    m_taken.insert(name.toLower());
    return name + ".html"_L1;
}

QByteArray PageIds::take(QByteArrayView parent, const QString &name)
{
    QByteArray id;
    id.reserve(parent.size() + 1 + name.size());
    id.append(parent);
    if (!parent.isEmpty())
        id.append('.');
    const qsizetype begin = id.size();
    for (const QChar c : name) {
        if (c.unicode() >= 0x80) {
            id.truncate(begin);
            id.append(name.toUtf8());
            break;
        }
        id.append(static_cast<char>(c.unicode()));
    }
    if (id.size() == begin)
        id.append('_');
    for (qsizetype at = begin; at < id.size(); ++at) {
        const auto c = static_cast<unsigned char>(id.at(at));
        if (c <= 0x20 || c == 0x7F || std::strchr("\"'&<>`=", c))
            id[at] = '_';
    }
    const qsizetype taken = m_taken.size();
    m_taken.insert(id);
    if (m_taken.size() > taken)
        return id;
    int &copy = m_copies.insert(id, qMax(1, m_copies.value(id))).value();
    QByteArray other;
    do
        other = id + '~' + QByteArray::number(++copy);
    while (m_taken.contains(other));
    m_taken.insert(other);
    return other;
}

QByteArray fragmentOf(const QByteArray &id)
{
    const bool isPlain = std::ranges::all_of(id, [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '-' ||
               c == '.' || c == '~';
    });
    return isPlain ? id : id.toPercentEncoding();
}

} // namespace veldmap
