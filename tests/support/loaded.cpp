#include "support/loaded.h"

#include "loading/memory_map_loader.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

Loaded *receiver = nullptr; // callbacks have no place for a context

QString withoutDirectory(const char *text)
{
    return QString::fromUtf8(text).replace(receiver->directory->path() + u'/', QString());
}

} // namespace

void writeFile(const QString &path, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(content), content.size());
}

QString readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : u"(no file "_s + path + u')';
}

Loaded::Loaded(const Files &files) : directory(std::make_unique<QTemporaryDir>()), map(std::make_unique<VMMemoryMap>())
{
    for (const auto &[name, text] : files)
        writeFile(path(name), text.toUtf8());
    receiver = this;
    map->chipRootArchive = VMMemoryMapLoader().loadRootArchiveFromFile(
        map.get(), path(files.front().first), [](const char *text) { receiver->logs += withoutDirectory(text); },
        [](const char *text) { receiver->errors += withoutDirectory(text); },
        [](const char *text) { receiver->warnings += withoutDirectory(text); }, true);
}

Loaded::Loaded(const QString &text) : Loaded(Files{{QStringLiteral("soc.xml"), text}}) {}

void expectGolden(const QString &name, const QString &text)
{
    const QString path = QStringLiteral(GOLDEN_DIRECTORY "/") + name;
    if (qEnvironmentVariableIsSet("UPDATE_GOLDEN"))
        writeFile(path, text.toUtf8());
    EXPECT_EQ(readFile(path).toStdString(), text.toStdString()) << "in " << path.toStdString();
}

void expectCases(const QString &name, const Answer &answer, const QString &frame)
{
    QStringList cases = readFile(QStringLiteral(GOLDEN_DIRECTORY "/") + name).split(u"\n----------\n"_s);
    for (QString &text : cases) {
        const QStringList parts = text.split(u"\n=> "_s);
        const Loaded soc = Loaded::archive(frame.arg(parts.first()));
        text = parts.first();
        for (const QString &part : parts.sliced(1)) {
            const QString question = part.section(u'\n', 0, 0);
            text += u"\n=> "_s + question + u'\n' +
                    (soc.isLoaded() ? answer(soc, question.split(u' ')) : soc.errors.join(u'\n'));
        }
    }
    expectGolden(name, cases.join(u"\n----------\n"_s));
}
