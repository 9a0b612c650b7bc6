#include "xml/comment_text.h"

#include "xml/tag_attributes.h"

using namespace Qt::StringLiterals;

namespace {

/// The serialised form of \a tag without the tags in \a ownForms, wherever they stand.
QString contentOf(const veldmap::Tag &tag, std::initializer_list<QLatin1StringView> ownForms)
{
    QString text = tag.serialized();
    for (const QLatin1StringView form : ownForms)
        text.remove(form);
    return text;
}

} // namespace

namespace veldmap {

QString readComment(const Tag &tag)
{
    // Nearly every comment is text with line breaks.
    if (tag.nameAsWritten() == "comment"_L1) {
        if (const QString line = tag.lineOfText(); !line.isNull())
            return line;
    }
    QString comment = contentOf(tag, {"<comment>"_L1, "</comment>"_L1, "<comment/>"_L1}).simplified();
    comment.replace("<br/>"_L1, "<br>"_L1);
    comment = comment.simplified();
    comment.replace("&quot;"_L1, "\""_L1);
    return comment;
}

QString readCJoker(const Tag &tag)
{
    QString text = contentOf(tag, {"<cjoker>"_L1, "</cjoker>"_L1, "<cjoker/>"_L1});
    text.replace("&quot;"_L1, "\""_L1);
    text.replace("&amp;"_L1, "&"_L1);
    text.replace("&gt;"_L1, ">"_L1);
    text.replace("&lt;"_L1, "<"_L1);
    text.remove("&#xd;"_L1);
    return text;
}

} // namespace veldmap

QString readCommentFromCommentTag(const QDomElement &tag)
{
    const veldmap::TagDocument document(tag);
    return veldmap::readComment(document.root());
}

QString readCJokerFromCommentTag(const QDomElement &tag)
{
    const veldmap::TagDocument document(tag);
    return veldmap::readCJoker(document.root());
}
