#include "console/snapshot.h"

#include "access/path_hint.h"
#include "console/commands.h"
#include "console/console_rules.h"
#include "console/state.h"
#include "console/value_texts.h"
#include "files/file_writer.h"
#include "model/memory_map.h"
#include "model/root_archive.h"
#include "model/valuable.h"
#include "text/bit_arithmetic.h"
#include "text/lines.h"
#include "text/literals.h"

#include <QFile>
#include <QHash>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// All registers and integers below the instances of \a map by path: a lookup of each by itself would walk the tree.
QHash<QString, VMValuable *> valuablesByPath(const VMMemoryMap &map)
{
    QHash<QString, VMValuable *> valuables;
    for (const VMRootArchive *root : {map.chipRootArchive, map.softRootArchive}) {
        for (std::size_t at = 0; root && at < root->instances.size(); ++at) {
            for (VMValuable *valuable : valuablesIn(*root->instances[at])) {
                const QString path = valuable->getPath();
                if (!valuables.contains(path))
                    valuables.insert(path, valuable);
            }
        }
    }
    return valuables;
}

/// The line of a snapshot, of which \a line is one that is not empty; nothing when it is none.
std::optional<std::pair<QString, std::optional<quint32>>> savedIn(const QString &line)
{
    const qsizetype sign = line.indexOf(u'=');
    if (sign < 0)
        return std::nullopt;
    const QString path = line.first(sign).trimmed();
    const QString value = line.sliced(sign + 1).trimmed();
    if (value == u'?')
        return std::pair(path, std::optional<quint32>());
    const std::optional<qint64> number = numberOf(value);
    if (!number || *number < 0 || *number > 0xFFFFFFFF)
        return std::nullopt;
    return std::pair(path, std::optional(static_cast<quint32>(*number)));
}

} // namespace

std::optional<std::vector<SavedValue>> readSnapshot(ConsoleState &state, const QString &path)
{
    QFile file(path);
    QByteArray bytes;
    if (file.open(QIODevice::ReadOnly))
        bytes = file.readAll();
    if (file.error() != QFile::NoError) {
        state.fail(console_rules::kNoFile, {path, file.errorString()});
        return std::nullopt;
    }
    const QHash<QString, VMValuable *> valuables = valuablesByPath(state.map);
    std::vector<SavedValue> values;
    const QStringList lines = QString::fromUtf8(bytes).split(u'\n');
    for (qsizetype at = 0; at < lines.size(); ++at) {
        const QString line = lines[at].trimmed();
        if (line.isEmpty() || line.startsWith(u'#'))
            continue;
        const auto saved = savedIn(line);
        if (!saved) {
            state.fail(console_rules::kNoSnapshot, {path, QString::number(at + 1), line.left(80)});
            return std::nullopt;
        }
        const auto &[name, value] = *saved;
        VMValuable *valuable = valuables.value(name);
        if (!valuable) // it may lie behind a pointer
            valuable = elementCast<VMValuable>(findElement(state.map, name, state));
        if (!valuable)
            return std::nullopt;
        if (value && (*value & ~lowBits(valuable->getBitSize())) != 0) {
            state.fail(console_rules::kNoSnapshot, {path, QString::number(at + 1), line});
            return std::nullopt;
        }
        values.push_back({valuable, value});
    }
    return values;
}

bool writeSnapshot(ConsoleState &state, const QString &path, const std::vector<SavedValue> &values)
{
    QString text = lineOf(u"# values of ", state.target->description());
    for (const auto &[valuable, value] : values)
        text += lineOf(valuable->getPath(), u" = ", value ? hexText(*value, valuable->getBitSize()) : u"?"_s);
    const WriteResult result = writeWholeFile(path, text.toUtf8());
    return result.outcome != WriteResult::Failed || state.fail(console_rules::kFileUnwritable, {path, result.reason});
}

} // namespace veldmap
