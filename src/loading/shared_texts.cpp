#include "loading/shared_texts.h"

#include "text/names.h"

#include <QHash>

#include <algorithm>
#include <utility>

namespace veldmap {

namespace {

constexpr std::size_t kFewestPlaces = 256;
constexpr std::size_t kMostPlaces = 16 * 1024;

} // namespace

QString SharedTexts::of(QStringView text)
{
    if (text.isEmpty())
        return {};
    QString &known = placeOf(text);
    if (known != text) {
        known = text.toString();
        ++m_misses;
        m_characters += known.size();
    }
    return known;
}

QString SharedTexts::of(QString text)
{
    if (text.isEmpty())
        return {};
    QString &known = placeOf(text);
    if (known != text) {
        if (text.capacity() > text.size())
            text.squeeze();
        known = std::move(text);
        ++m_misses;
        m_characters += known.size();
    }
    return known;
}

QString SharedTexts::ofName(QStringView text)
{
    return std::ranges::all_of(text, isNameCharacter) ? of(text) : of(regularizeVariableName(text.toString()));
}

QString &SharedTexts::placeOf(QStringView text)
{
    if (2 * m_misses >= m_places.size() && m_places.size() < kMostPlaces)
        grow();
    return m_places[qHash(text) & (m_places.size() - 1)];
}

void SharedTexts::grow()
{
    const std::vector<QString> before =
        std::exchange(m_places, std::vector<QString>(qMax(4 * m_places.size(), kFewestPlaces)));
    m_misses = 0;
    for (const QString &text : before)
        m_places[qHash(QStringView(text)) & (m_places.size() - 1)] = text;
}

} // namespace veldmap
