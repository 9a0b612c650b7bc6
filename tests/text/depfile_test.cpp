// Files of dependencies, and that make and ninja read in them what was meant is in end_to_end/building.py.

#include "text/depfile.h"

#include "support/loaded.h"

using namespace Qt::StringLiterals;

TEST(Depfile, NamesAreQuoted)
{
    const struct {
        QString name;
        QString quoted;
    } rows[] = {
        {u"plain.xml"_s, u"plain.xml"_s}, {u"a b\tc"_s, u"a\\ b\\\tc"_s}, {u"a#b$c"_s, u"a\\#b$$c"_s},
        {u"a\\b"_s, u"a\\b"_s},           {u"a\\ b"_s, u"a\\\\\\ b"_s},   {u"C:/ä"_s, u"C\\:/ä"_s},
    };
    for (const auto &row : rows)
        EXPECT_EQ(veldmap::depfileText({u"t"_s}, {row.name}), u"t: \\\n %1\n\n%1:\n"_s.arg(row.quoted));
    EXPECT_EQ(veldmap::depfileText({u"t 1"_s, u"u"_s}, {u"a"_s, u"b c"_s}),
              u"t\\ 1 u: \\\n a \\\n b\\ c\n\na:\n\nb\\ c:\n"_s);
}
