// The text that a comment or a piece of C code is stored as.

#include "support/loaded.h"

#include "loading/document.h"
#include "xml/comment_text.h"

#include <QDomDocument>
#include <QTextStream>

using namespace Qt::StringLiterals;

TEST(Comments, StoredCommentsAndCCode)
{
    const Loaded soc = Loaded::archive(u"<comment>Reset  value<br/>\n next &quot;A&quot; &amp; B &lt;b></comment>"_s
                                       "<cjoker>#define A (1 &lt; 2)&#xd;\n  &amp;lt;</cjoker>"_s);
    EXPECT_EQ(soc.archiveAt(0).archiveComment, u"Reset value<br> next \"A\" &amp; B &lt;b>"_s);
    EXPECT_EQ(soc.archiveAt(0).cJoker, u"#define A (1 < 2)\n  <\n"_s);
    EXPECT_EQ(Loaded::archive(u"<comment/>"_s).archiveAt(0).archiveComment, QString());
    EXPECT_EQ(Loaded::archive(u"<Comment>a</Comment>"_s).archiveAt(0).archiveComment, u"<Comment>a</Comment>"_s);
    EXPECT_EQ(Loaded::archive(u"<comment>a</comment><comment>b</comment>"_s).archiveAt(0).archiveComment, u"b"_s);
}

TEST(Comments, MarkupIsStoredAsItsElementSavesItself)
{
    const QString contents[] = {u"plain"_s,
                                u"a<b>c</b>d"_s,
                                u"<b>c</b> <i/>"_s,
                                u" <b><i>x</i></b> y "_s,
                                u"a<![CDATA[<&>]]>b"_s,
                                u"<![CDATA[x]]>"_s,
                                u"a<!-- c -->b"_s,
                                u"<!--c--><b/>"_s,
                                u"a<?p q?>b"_s,
                                u"]]&gt; &gt; > &amp;amp;"_s,
                                u"<b x='1\"&lt;&#10;&#9;'>é</b>"_s,
                                u"&#xd;a\n b"_s,
                                u"<cjoker>in</cjoker><cjoker/>"_s,
                                u"<b>\n</b>"_s,
                                u"<b>&#160;</b>&#10;"_s,
                                u"x&#9;<b/>\u2003"_s};
    for (const QString &content : contents) {
        const QString text = u"<archive><cjoker>"_s + content + u"</cjoker></archive>"_s;
        QDomDocument document;
        ASSERT_TRUE(document.setContent(text)) << text.toStdString();
        QString expected;
        QTextStream stream(&expected);
        document.documentElement().firstChildElement().save(stream, 0);
        for (const QLatin1StringView form : {"<cjoker>"_L1, "</cjoker>"_L1, "<cjoker/>"_L1})
            expected.remove(form);
        expected.replace("&quot;"_L1, "\""_L1).replace("&amp;"_L1, "&"_L1).replace("&gt;"_L1, ">"_L1);
        expected.replace("&lt;"_L1, "<"_L1).remove("&#xd;"_L1);
        EXPECT_EQ(Loaded(text).archiveAt(0).cJoker, expected) << text.toStdString();
        EXPECT_EQ(readCJokerFromCommentTag(document.documentElement().firstChildElement()), expected);
    }
    QDomDocument document;
    ASSERT_TRUE(document.setContent(u"<archive><cjoker>a</cjoker>text</archive>"_s));
    EXPECT_EQ(readCJokerFromCommentTag(document.documentElement().firstChildElement()), u"a"_s);
}

TEST(Comments, AttributesOfMarkupKeepTheirOrder)
{
    const QString comment = u"<b zeta='1' alpha='2' mid='3' beta='4'>x</b>"_s;
    const Loaded soc = Loaded::archive(u"<comment>"_s + comment + u"</comment>"_s);
    const QString expected = QString(comment).replace(u'\'', u'"');
    EXPECT_EQ(soc.archiveAt(0).archiveComment, expected);

    QDomDocument document;
    bool encrypted = true;
    ASSERT_EQ(loadXMLDocument(soc.path(u"soc.xml"_s), document, encrypted, nullptr, nullptr, nullptr, true),
              XMDOpenSuccess);
    EXPECT_FALSE(encrypted);
    EXPECT_EQ(readCommentFromCommentTag(document.documentElement().firstChildElement()), expected);
}
