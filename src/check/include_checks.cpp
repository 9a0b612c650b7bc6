#include "check/tree_groups.h"
#include "check/tree_rules.h"
#include "model/archive.h"
#include "model/root_archive.h"
#include "model/scope_index.h"

#include <QHash>

#include <utility>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// Whether \a expression names nothing: its value is the same in every description.
bool isConstant(QStringView expression)
{
    bool isInWord = false;
    for (const QChar c : expression) {
        const bool isLetter = c.isLetter() || c == u'_';
        if (isLetter && !isInWord)
            return false;
        isInWord = isLetter || c.isDigit(); // the x of 0x10 begins no name
    }
    return true;
}

bool isNever(const QString &condition)
{
    const auto findNothing = [](const QString &) -> const VMIntVar * { return nullptr; };
    if (!isConstant(condition))
        return false;
    const Evaluated holds = evaluateExpression(condition, findNothing);
    return !holds.failed && holds.value == 0;
}

/// The includes by which archives have others, as the headers show them: the last by which each was found.
QHash<const VMXMLArchive *, const VMXMLInclude *> includesOf(const VMRootArchive &root)
{
    QHash<const VMXMLArchive *, const VMXMLInclude *> found;
    for (const VMXMLArchive *includer : root.xmlArchives) {
        QHash<QString, const VMXMLInclude *> byHeader;
        for (const VMXMLInclude &include : includer->includes)
            byHeader.insert(include.headerName, &include);
        for (const VMXMLArchive *archive : includer->includedArchives) {
            if (const VMXMLInclude *include = byHeader.value(archive->getBaseName() + QLatin1StringView(".h")))
                found.insert(archive, include);
        }
    }
    return found;
}

} // namespace

void checkIncludes(const VMRootArchive &root, Sink &sink)
{
    // Archives of one tag: the load took its file for two.
    QHash<std::pair<QString, std::pair<quint32, quint32>>, const VMXMLArchive *> known;
    QHash<const VMXMLArchive *, const VMXMLInclude *> includes; // found when first asked for
    for (const VMXMLArchive *archive : root.xmlArchives) {
        const SourcePlace &source = archive->source;
        const VMXMLArchive *&first = known[{source.file.name(), {source.line, source.column}}];
        if (!first) {
            first = archive;
        } else {
            if (includes.isEmpty())
                includes = includesOf(root);
            const VMXMLInclude *include = includes.value(archive);
            const VMXMLInclude *other = includes.value(first);
            sink.take(
                Finding(lint::fileTwice.rule, include ? include->source.place() : source.place(),
                        {source.file.name().section(u'/', -1), archive->relativeFileName, first->relativeFileName})
                    .withPlace(other ? other->source.place() : Place(), u"the other include"_s));
        }
        for (const VMXMLInclude &include : archive->includes) {
            for (const VMXMLIncludeCondition &alternative : include.conditions) {
                if (isNever(alternative.condition))
                    sink.take(Finding(lint::conditionNever.rule, alternative.source.place(),
                                      {alternative.condition, alternative.headerName}));
            }
        }
    }
}

} // namespace veldmap
