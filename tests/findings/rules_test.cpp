// The rules of all rooms, as they stand in the sources.

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QSet>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

TEST(Rules, IdsAreUnique)
{
    static const QRegularExpression row(u"\\{\"([^\"]*)\"_L1,\\s*(?:veldmap::)?Severity::"_s);
    QSet<QString> ids;
    QDirIterator sources(QStringLiteral(SOURCE_DIRECTORY), {u"*.h"_s, u"*.cpp"_s}, QDir::Files,
                         QDirIterator::Subdirectories);
    while (sources.hasNext()) {
        QFile file(sources.next());
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(file.readAll());
        for (const QRegularExpressionMatch &match : row.globalMatch(text)) {
            const QString id = match.captured(1);
            EXPECT_FALSE(ids.contains(id)) << id.toStdString();
            EXPECT_TRUE(QRegularExpression(u"^[a-z0-9]+(-[a-z0-9]+)*$"_s).match(id).hasMatch()) << id.toStdString();
            ids += id;
        }
    }
    EXPECT_TRUE(ids.contains(u"no-element"_s) && ids.contains(u"file-unwritable"_s)); // the rows are found
}
