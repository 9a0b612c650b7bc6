// The headers beside those of the files: functions for registers, and the global variables.

#include "headers/accessors.h"
#include "headers/globals.h"
#include "support/loaded.h"

#include "findings/finding.h"

using namespace Qt::StringLiterals;

namespace {

/// What the header of the root file says behind its includes, and what is told of it.
QString accessorsOf(const Loaded &soc, const QStringList &)
{
    const veldmap::AccessorHeader header = veldmap::accessorHeaderOf(soc.archiveAt(0));
    QString text = header.text.section(u".h\"\n"_s, -1).remove(u"\n#endif\n"_s);
    for (const veldmap::Finding &finding : header.findings)
        text += u"warning "_s + placedText(finding).section(u'/', -1) + u'\n';
    return text;
}

QString globalsOf(const Loaded &soc, const QStringList &words)
{
    const bool isAssembly = words.first() == u"assembly"_s;
    return isAssembly ? veldmap::globalsAssemblyHeader(*soc.map->globalVariables)
                      : veldmap::globalsHeader(*soc.map->globalVariables);
}

} // namespace

TEST(Accessors, OfTypes)
{
    expectCases(u"headers/accessors.txt"_s, accessorsOf);
}

TEST(Accessors, IncludeWhatTheFileIncludes)
{
    const Loaded soc({{u"my-soc.xml"_s, u"<archive><include file='sub/a.xml'/><include file='b.xml'/></archive>"_s},
                      {u"sub/a.xml"_s, u"<archive><include file='../b.xml'/></archive>"_s},
                      {u"b.xml"_s, u"<archive/>"_s}});
    const QString text = veldmap::accessorHeaderOf(soc.archiveAt(0)).text;
    EXPECT_EQ(text.sliced(text.indexOf(u"#ifndef"_s)),
              u"#ifndef VELDMAP_MY_SOC_ACCESSORS_H\n#define VELDMAP_MY_SOC_ACCESSORS_H\n\n#include <stdint.h>\n\n"
              "#include \"my-soc.h\"\n#include \"a_accessors.h\"\n#include \"b_accessors.h\"\n\n#endif\n"_s);
    EXPECT_EQ(veldmap::accessorHeaderName(soc.archiveAt(1)), u"sub/a_accessors.h"_s);
}

TEST(Accessors, CommentsOfAFileEndWithTheirLines)
{
    const Loaded soc = Loaded::archive(u"<comment>in C:\\<br/>or ?\?/<br/>\u202E \\  </comment>"_s);
    const QString text = veldmap::accessorHeaderOf(soc.archiveAt(0)).text;
    EXPECT_TRUE(text.contains(u"/// in C:\\.\n/// or ?\?/.\n/// "_s)) << text.toStdString();
    EXPECT_FALSE(text.contains(QChar(0x202E)) || text.contains(u"\\\n"_s));
    EXPECT_TRUE(text.startsWith(soc.archiveAt(0).c_header().section(u"/// @file"_s, 0, 0)));
}

TEST(Globals, AreMacros)
{
    expectCases(u"headers/globals.txt"_s, globalsOf);
}
