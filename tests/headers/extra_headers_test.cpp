// The headers beside those of the files: the global variables.

#include "headers/globals.h"
#include "support/loaded.h"

using namespace Qt::StringLiterals;

namespace {

QString globalsOf(const Loaded &soc, const QStringList &words)
{
    const bool isAssembly = words.first() == u"assembly"_s;
    return isAssembly ? veldmap::globalsAssemblyHeader(*soc.map->globalVariables)
                      : veldmap::globalsHeader(*soc.map->globalVariables);
}

} // namespace

TEST(Globals, AreMacros)
{
    expectCases(u"headers/globals.txt"_s, globalsOf);
}
