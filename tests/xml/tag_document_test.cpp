// The two readers of documents make the same of the same bytes, and the fast one reads what descriptions are made of.

#include "xml/tag_document.h"

#include <gtest/gtest.h>

#include <QDirIterator>
#include <QFile>
#include <QStringEncoder>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace veldmap;

namespace {

void appendTag(const Tag &tag, QString &text)
{
    text += u"%1 %2 %3 %4:%5 %6"_s.arg(QString::number(tag.number()), tag.name(), tag.nameAsWritten(),
                                       QString::number(tag.lineNumber()), QString::number(tag.columnNumber()),
                                       tag.plainText());
    for (const TagDocument::Attribute &attribute : tag.attributes())
        text += u" [%1=%2]"_s.arg(attribute.name, attribute.value);
    text += u'\n';
    for (Tag child = tag.firstChild(); !child.isNull(); child = child.nextSibling())
        appendTag(child, text);
}

/// All that is known of the tags and notes of \a document.
std::string textOf(const TagDocument &document)
{
    QString text;
    appendTag(document.root(), text);
    for (const TagDocument::Note &note : document.notes())
        text += u"%1:%2 %3 %4\n"_s.arg(QString::number(note.line), QString::number(note.column),
                                       QString::number(note.tag), note.text);
    return (text + document.root().serialized()).toStdString();
}

/// Reads \a bytes in every way; whether their form is plain.
bool areReadAlike(const QByteArray &bytes)
{
    TagDocument any;
    const TagDocument::Error refused = any.readAny(bytes);
    TagDocument plain;
    const bool isPlain = plain.readPlain(bytes);
    TagDocument document;
    const TagDocument::Error error = document.read(bytes);
    EXPECT_EQ(bool(refused), bool(error));
    EXPECT_FALSE(refused && isPlain);
    if (refused) {
        EXPECT_EQ(refused.refusal.rule, error.refusal.rule);
        EXPECT_EQ(refused.refusal.arguments, error.refusal.arguments);
        EXPECT_EQ(std::pair(refused.line, refused.column), std::pair(error.line, error.column));
        return false;
    }
    EXPECT_EQ(textOf(document), textOf(any));
    if (isPlain) {
        EXPECT_EQ(textOf(plain), textOf(any));
    }
    return isPlain;
}

QByteArray encoded(QStringConverter::Encoding encoding, QStringView text)
{
    QStringEncoder encoder(encoding);
    return encoder(text);
}

/// \a text with "\" in front of "n", "r", "t" and "0" as what C has for it.
QByteArray unescaped(const char *text)
{
    return QByteArray(text).replace("\\r", "\r").replace("\\n", "\n").replace("\\t", "\t");
}

} // namespace

TEST(TagDocument, PlainFormsAreReadAsTheXmlReaderReadsThem)
{
    const char *const kDocuments[] = {
        "<a/>",
        "<a></a>\\n",
        " \\n<a/>",
        "<?xml version=\"1.0\"?><a/>",
        "<?xml version='1.0' encoding=\"utf-8\" ?>\\n\\n<a x = 'y\"' \\n z=\"\"\\t/ >",
        "<?xml version='1.0' encoding=\"utf-8\" ?>\\n\\n<a x = 'y\"' \\n z=\"\"\\t/>",
        "\xEF\xBB\xBF<a>\\n <b/></a>",
        "<a>\\n<b>\\n</b>\\n  <c x='1'/>\\n</a>",
        "<a>\\r\\n<b>\\r\\n</b>\\r\\n  <c x='1\\r\\n2'/>\\r\\n</a>\\r\\n",
        "<a>\\r<b>x\\ry\\r\\nz</b>\\r  <c x='1\\r2'/>\\r\\r</a>\\r",
        "<a>\\n\\r<b>\\r\\r\\n</b><c/></a>",
        "<a>&#13;&#xd;\\r&#10; <b x='&#13;&#10;&#9; \\t\\n'/></a>",
        "<a x='&lt;&gt;&amp;&quot;&apos;&#65;&#x42;&#x1F600;'>&lt;&gt;&amp;&quot;&apos;&#65;&#x42;&#x1F600;</a>",
        "<a>x&#160;y<b>&#160;</b><c>&#8195;&#32;</c><d> &#x2028; </d></a>",
        "<a>one<![CDATA[<two>&amp;]]>three<![CDATA[four]]><![CDATA[ five]]></a>",
        "<a> <![CDATA[x]]> \\n <![CDATA[]]><![CDATA[ ]]><b/></a>",
        "<a>]] ]&gt; ]]&gt; ] > ]></a>",
        "<!-- first --><!--second\\n--><a><!-- in -->text<!--\\n--><b/> <!--last--></a><!-- behind -->\\n",
        ("<a>\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80<b x='\xF0\x9F\x98\x80'/><!-- \xF0\x9F\x98\x80 "
         "--><c/>\\n\xC3\xA9<d/></a>"),
        "<Archive><MODULE Name='x' name='y'/><module><A.b-c_d/></module ></Archive >",
        "<a>x &lt; y &amp;&amp; z<br/>w</a>",
        "<a\\n\\tx='1'\\n\\ty='2'\\n\\t>\\n<b\\n/></a\\n>",
        "<a x='>' y=\"/>\" z='a=b'/>",
        "<a>\x7F\xC2\x80\xC2\x85\xE2\x80\xA8</a>",
        "<a x='\x7F\xC2\x85\xE2\x80\xA8'/>",
        "<a><b>x</b>y<b>z</b></a>",
    };
    for (const char *document : kDocuments) {
        SCOPED_TRACE(document);
        areReadAlike(unescaped(document));
    }
    EXPECT_TRUE(areReadAlike(unescaped(kDocuments[7])));
    EXPECT_TRUE(areReadAlike(unescaped(kDocuments[8])));
    EXPECT_TRUE(areReadAlike(unescaped(kDocuments[12])));
}

TEST(TagDocument, OddDocumentsAreReadOrRefusedAsTheXmlReaderDoes)
{
    const char *const kDocuments[] = {
        "",
        " ",
        "x",
        "<",
        "<a",
        "<a ",
        "<a x",
        "<a x=",
        "<a x='",
        "<a x='1",
        "<a>",
        "<a/",
        "<a></a",
        "<a>x",
        "<a>&",
        "<a>&amp",
        "<a>&#",
        "<a>&#x",
        "<a x='&#3'/>",
        "<!",
        "<!-",
        "<!--",
        "<!-- -",
        "<!-- --",
        "<a><![CDATA[",
        "<a><![CDATA[]]",
        "<?xml",
        "<?xml version",
        "<?xml version='1.0",
        "<?xml version='1.0'",
        "<?xml version='1.0'?",
        "<?xml version='1.0'?>",
        "<?xml version='1.1'?><a/>",
        "<?xml version='1.0' standalone='yes'?><a/>",
        "<?xml version='1.0' encoding='utf-8' standalone='no'?><a/>",
        "<?xml encoding='utf-8'?><a/>",
        "<?xml version='1.0'encoding='utf-8'?><a/>",
        "<?xml version='1.0' encoding=''?><a/>",
        "<?xml version='1.0' encoding='UTF8'?><a/>",
        "<?xml version='1.0' encoding='us-ascii'?><a/>",
        "<?xml version='1.0' encoding='iso-8859-1'?><a>\xE9</a>",
        "<?xml version='1.0' encoding='windows-1252'?><a>\x80</a>",
        "<?xml version='1.0' encoding='utf-16'?><a/>",
        "<?xml version='1.0' encoding='x-none'?><a/>",
        " <?xml version='1.0'?><a/>",
        "<?XML version='1.0'?><a/>",
        "<?xmlx y?><a/>",
        "<?xml version='1.0'?><?xml version='1.0'?><a/>",
        "<?target data?><a><?other?><?one two?></a>",
        "<!DOCTYPE a><a/>",
        "<!DOCTYPE a [<!ENTITY e 'text'>]><a x='&e;'>&e;</a>",
        "<!DOCTYPE a [<!ATTLIST a x CDATA 'd'>]><a/>",
        "<a><!DOCTYPE a></a>",
        "<a>&e;</a>",
        "<a>&lt</a>",
        "<a>&LT;</a>",
        "<a>& </a>",
        "<a>&#0;</a>",
        "<a>&#1;</a>",
        "<a>&#xD800;</a>",
        "<a>&#xFFFE;</a>",
        "<a>&#xFFFF;</a>",
        "<a>&#x110000;</a>",
        "<a>&#99999999999;</a>",
        "<a>&#00000000065;&#x0000041;</a>",
        "<a>&#X41;</a>",
        "<a>&#+5;</a>",
        "<a>&# 5;</a>",
        "<a>&#;</a>",
        "<a>&#x;</a>",
        "<a x='<'/>",
        "<a x='&#60;'/>",
        "<a x='1' x='2'/>",
        "<a x='1' X='2'/>",
        "<a x=1/>",
        "<a x='1'y='2'/>",
        "<a x/>",
        "<a 1='2'/>",
        "<1/>",
        "<-a/>",
        "<a/><b/>",
        "<a/>x",
        "x<a/>",
        "<a/>&#32;",
        "&#32;<a/>",
        "<a/><![CDATA[x]]>",
        "<![CDATA[x]]><a/>",
        "</a>",
        "<a></b>",
        "<a></A>",
        "<a></a x='1'>",
        "<a></ a>",
        "< a/>",
        "<a></a/>",
        "<a><b></a></b>",
        "<a>]]></a>",
        "<a x=']]>'/>",
        "<a><!-- -- --></a>",
        "<a><!-- ---></a>",
        "<a><!----></a>",
        "<a><!---></a>",
        "<!-- a --b--><a/>",
        "<a><![cdata[x]]></a>",
        "<a><![CDATA[x]] ></a>",
        "<a><![CDATA[\\r\\nx]]></a>",
        "<p:a/>",
        "<p:a xmlns:p='u'/>",
        "<a p:x='1'/>",
        "<a xmlns='u'><b/></a>",
        "<a xmlns=''/>",
        "<:a/>",
        "<a:/>",
        "<a:b:c/>",
        "<a xml:space='preserve'> </a>",
        "<\xC3\xA9/>",
        "<a \xC3\xA9='1'/>",
        "<a\xC2\xB7/>",
        "<A\xCC\x80/>",
        "<a>\x01</a>",
        "<a>\x0C</a>",
        "<a x='\x0B'/>",
        "<!--\x01--><a/>",
        "<a>\xFF</a>",
        "<a>\xC3</a>",
        "<a>\xC0\x80</a>",
        "<a>\xED\xA0\x80</a>",
        "<a>\xEF\xBF\xBE</a>",
        "<a>\xEF\xBF\xBF</a>",
        "<a>\xEF\xBB\xBF</a>",
        "<a x='\xEF\xBF\xBE'/>",
        "<!--\xEF\xBF\xBF--><a/>",
        "<a><![CDATA[\xEF\xBF\xBF]]></a>",
        "<a>\xF4\x90\x80\x80</a>",
        "<a>\xF0\x9F\xBF\xBF\xF4\x8F\xBF\xBE</a>",
        "<a/>\xEF\xBB\xBF",
        "\xEF\xBB\xBF\xEF\xBB\xBF<a/>",
    };
    for (const char *document : kDocuments) {
        SCOPED_TRACE(document);
        areReadAlike(unescaped(document));
    }
    for (const auto encoding : {QStringConverter::Utf16, QStringConverter::Utf16LE, QStringConverter::Utf16BE,
                                QStringConverter::Utf32, QStringConverter::Utf8})
        areReadAlike(encoded(encoding, u"<?xml version='1.0'?><a x='\u00E9'>\n\u20AC<b/></a>"));
    using Bytes = QByteArray;
    for (const QByteArray &bytes : {Bytes("<a>\0</a>", 8), Bytes("<a/>\0", 5), Bytes("<a \0/>", 6), Bytes("<a>\0", 4),
                                    Bytes("\0<a/>", 5), Bytes("<a x='\0'/>", 10), Bytes("<!--\0--><a/>", 12)})
        areReadAlike(bytes);
}

TEST(TagDocument, DocumentsAtTheLimits)
{
    for (const int depth : {255, 256, 257, 300})
        areReadAlike(QByteArray("<a>").repeated(depth) + QByteArray("</a>").repeated(depth));
    for (const int count : {32, 33, 1024, 1025}) {
        QByteArray tag = "<a>\n<b";
        for (int number = 0; number < count; ++number)
            tag += " x" + QByteArray::number(number) + "=''";
        areReadAlike(tag + "/></a>");
        areReadAlike(tag + " x0=''/></a>");
    }
    areReadAlike("<a>" + QByteArray(100'000, 'x') + "&lt;" + QByteArray(100'000, 'y') + "</a>");
}

/// A document cut off, or with one character more, one less or another one anywhere, is another one, or none.
TEST(TagDocument, SpoiledDocumentsAreReadAlike)
{
    const QByteArray document =
        unescaped("<?xml version='1.0' encoding=\"UTF-8\"?>\\r\\n<!-- n --><ar x='&lt;\\t'>\\n t &#x41; "
                  "<b y=\"\xC3\xA9\"/><![CDATA[<]]]]>\xF0\x9F\x98\x80<C>]</C>\\n</ar>\\n<!--e-->");
    for (qsizetype at = 0; at <= document.size(); ++at) {
        areReadAlike(document.first(at));
        for (const char c : QByteArrayView("<>&;'\"/!?-[]= \n\r\tx:#0\x01\x80\xC3\xFF")) {
            areReadAlike(document.first(at) + c + document.sliced(at));
            if (at < document.size())
                areReadAlike(document.first(at) + c + document.sliced(at + 1));
        }
        if (at < document.size())
            areReadAlike(document.first(at) + document.sliced(at + 1));
    }
}

TEST(TagDocument, RealFilesAreReadAlikeAndFast)
{
    int plain = 0;
    for (const QString &directory :
         QStringLiteral(CHIP_DIRECTORIES ":" CORPUS_DIRECTORY).split(u':', Qt::SkipEmptyParts)) {
        QDirIterator files(directory, QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            QFile file(files.next());
            ASSERT_TRUE(file.open(QIODevice::ReadOnly));
            const QByteArray bytes = file.readAll();
            SCOPED_TRACE(file.fileName().toStdString());
            plain += areReadAlike(bytes) ? 1 : 0;
        }
    }
    EXPECT_GT(plain, 20);
}
