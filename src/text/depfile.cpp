#include "text/depfile.h"

#include "text/lines.h"

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// \a name so that it is read as one name. Backslashes count only in front of what they quote, and there twice.
QString escaped(const QString &name)
{
    QString text;
    qsizetype backslashes = 0;
    for (const QChar character : name) {
        if (character == u' ' || character == u'\t')
            text += QString(backslashes + 1, u'\\');
        else if (character == u'#' || character == u':')
            text += u'\\';
        else if (character == u'$')
            text += u'$';
        text += character;
        backslashes = character == u'\\' ? backslashes + 1 : 0;
    }
    return text;
}

} // namespace

QString depfileText(const QStringList &targets, const QStringList &sources)
{
    QStringList names;
    for (const QString &target : targets)
        names += escaped(target);
    QString dependencies = names.join(u' ') + u':';
    QString rules;
    for (const QString &source : sources) {
        const QString name = escaped(source);
        dependencies += " \\\n "_L1 + name;
        rules += u'\n' + lineOf(name, u":");
    }
    return dependencies + u'\n' + rules;
}

} // namespace veldmap
