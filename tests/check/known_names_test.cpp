#include "check/known_names.h"
#include "loading/load.h"
#include "support/loaded.h"

using namespace Qt::StringLiterals;

namespace {

/// What the names of a load are nearest to in its first error.
QString nearestIn(const QString &content)
{
    const Loaded written(u"<archive>"_s + content + u"</archive>"_s);
    VMMemoryMap map;
    veldmap::FindingList told;
    veldmap::KnownNames names;
    EXPECT_EQ(veldmap::loadRoot(map, written.path(u"soc.xml"_s), true, told, {.documents = &names}), nullptr);
    for (const veldmap::Finding &finding : std::as_const(told.findings)) {
        if (finding.severity == veldmap::Severity::Error)
            return names.nearestFor(finding);
    }
    return u"no error"_s;
}

} // namespace

TEST(KnownNames, NearestOfWhatMayStandThere)
{
    const struct {
        QString content;
        QString nearest;
    } rows[] = {
        {u"<insatnce/>"_s, u"instance"_s},
        {u"<qqqqqqqq/>"_s, QString()},
        {u"<module name='m'><registr/><reg33 name='r'/></module>"_s, QString()},
        {u"<module name='m'><reg33 name='r'/></module>"_s, u"reg32"_s},
        {u"<module name='m'><struct name='s'><memry/></struct></module>"_s, u"memory"_s},
        {u"<module name='m'><reg name='r'><bit/></reg></module>"_s, u"bits"_s},
        {u"<module name='m'><reg name='r'><bits name='b' pos='0'><option/></bits></reg></module>"_s, u"options"_s},
        {u"<module name='m'><reg name='r'><bits name='b' pos='0'><options><opton/></options></bits></reg></module>"_s,
         u"option"_s},
        {u"<enum name='e'><enrty name='a'/></enum>"_s, u"entry"_s},
        {u"<typedef name='fifo'/><instance name='i' type='fif'/>"_s, u"fifo"_s},
        {u"<module name='m'><instance name='i' type='speeds'/></module><enum name='speed'/>"_s, u"speed"_s},
        {u"<enum name='speed'/><module name='sped'><reg name='r'><bits name='b' pos='0'><options linkenum='speeed'/>"
         "</bits></reg></module>"_s,
         u"speed"_s},
        {u"<var name='a' value='b'/>"_s, QString()},
    };
    for (const auto &row : rows)
        EXPECT_EQ(nearestIn(row.content), row.nearest) << row.content.toStdString();
}
