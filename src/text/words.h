#pragma once

#include <QLatin1StringView>
#include <QStringView>

namespace veldmap {

/// Whether \a text is \a word: what == says, without a call for texts that differ in their size or first letter.
inline bool isWord(QStringView text, QLatin1StringView word)
{
    if (text.size() != word.size())
        return false;
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (text[at].unicode() != static_cast<unsigned char>(word[at].toLatin1()))
            return false;
    }
    return true;
}

/// The same where capitals count as small letters; \a word has none.
inline bool isWordOfAnyCase(QStringView text, QLatin1StringView word)
{
    return text.size() == word.size() && text.compare(word, Qt::CaseInsensitive) == 0;
}

} // namespace veldmap
