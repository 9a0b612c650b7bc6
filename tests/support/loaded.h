#pragma once

#include "model/archive.h"
#include "model/memory_map.h"
#include "model/root_archive.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <utility>
#include <vector>

inline void PrintTo(const QString &text, std::ostream *out)
{
    *out << '"' << text.toStdString() << '"';
}
inline void PrintTo(const QStringList &texts, std::ostream *out)
{
    *out << texts.join(QLatin1StringView(" | ")).toStdString();
}

/// Files of a description by name, the root first.
using Files = std::vector<std::pair<QString, QString>>;

/// A description that was written to a directory of its own and loaded from there. Messages name files without it.
class Loaded {
public:
    explicit Loaded(const Files &files);
    /// One file, soc.xml.
    explicit Loaded(const QString &text);
    /// A file in the document itself.
    static Loaded archive(const QString &content)
    {
        return Loaded(QStringLiteral("<archive>") + content + QStringLiteral("</archive>"));
    }

    bool isLoaded() const { return map->chipRootArchive != nullptr; }
    VMRootArchive &root() const { return *map->chipRootArchive; }
    /// The archive of the root file, or the one at \a place.
    VMXMLArchive &archiveAt(qsizetype place) const { return *root().xmlArchives.at(place); }
    /// The template of that name as a T; a failure of the test when there is none.
    template <typename T>
    T &type(const QString &name) const
    {
        T *found = map->chipRootArchive ? elementCast<T>(root().getTemplate(name)) : nullptr;
        if (!found)
            throw std::runtime_error("no type " + name.toStdString() + "; " + errors.join(u'|').toStdString());
        return *found;
    }
    QString path(const QString &file) const { return directory->filePath(file); }

    QStringList logs;
    QStringList errors;
    QStringList warnings;
    std::unique_ptr<QTemporaryDir> directory;
    std::unique_ptr<VMMemoryMap> map;
};

void writeFile(const QString &path, const QByteArray &content);
QString readFile(const QString &path);

/// Expects \a text to equal the golden file \a name; UPDATE_GOLDEN=1 writes it instead.
void expectGolden(const QString &name, const QString &text);

/// The answer to a question, in words, about a description.
using Answer = std::function<QString(const Loaded &soc, const QStringList &words)>;

/// Expects of each case in the golden file \a name that its questions have the answers that stand there. A case is the
/// content of an archive, or what replaces %1 in \a frame; a question is a line behind "=> ", and a line of dashes ends
/// a case. UPDATE_GOLDEN=1 writes the answers anew.
void expectCases(const QString &name, const Answer &answer, const QString &frame = QStringLiteral("%1"));
