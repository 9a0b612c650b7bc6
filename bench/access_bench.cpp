// What a console asks: the element of a path, and the completion of one level, on the descriptions of real chips. Each
// iteration does one; the paths are those of all elements and bitfields of the chip, in turn.

#include "access/completion.h"
#include "loading/memory_map_loader.h"
#include "model/aggregates.h"
#include "model/memory_map.h"
#include "model/root_archive.h"
#include "model/valuable.h"

#include <QDir>

#include <benchmark/benchmark.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

void collectPaths(const VMXMLElement &element, QStringList &paths)
{
    if (element.getType() != VMXMLElement::XML_HOLE)
        paths += element.getPath();
    if (const auto *structure = elementCast<VMStruct>(&element))
        std::ranges::for_each(structure->memberList, [&](const auto &member) { collectPaths(*member, paths); });
    if (const auto *array = elementCast<VMArray>(&element))
        std::ranges::for_each(array->memberList, [&](const auto &member) { collectPaths(*member, paths); });
    if (const auto *valuable = elementCast<VMValuable>(&element))
        std::ranges::for_each(valuable->bitFields, [&](const auto &field) { paths += field->getPath(); });
}

/// A loaded chip and the paths of all that it holds.
struct Chip {
    explicit Chip(const QString &directory)
    {
        map.chipRootArchive = VMMemoryMapLoader().loadRootArchiveFromFile(&map, directory + u"/soc.xml"_s, nullptr,
                                                                          nullptr, nullptr, true);
        if (map.chipRootArchive)
            std::ranges::for_each(map.chipRootArchive->instances, [&](auto &i) { collectPaths(*i, paths); });
    }
    VMMemoryMap map;
    QStringList paths;
};

template <typename Ask>
void askInTurn(benchmark::State &state, const QString &directory, const Ask &ask)
{
    const Chip chip(directory);
    if (chip.paths.isEmpty()) {
        state.SkipWithError("the chip did not load");
        return;
    }
    qsizetype next = 0;
    for (auto _ : state) {
        ask(chip.map, chip.paths.at(next));
        next = (next + 1) % chip.paths.size();
    }
    state.counters["paths"] = static_cast<double>(chip.paths.size());
}

void lookUp(benchmark::State &state, const QString &directory)
{
    askInTurn(state, directory, [](const VMMemoryMap &map, const QString &path) {
        benchmark::DoNotOptimize(map.getElementFromPath(path));
    });
}

void complete(benchmark::State &state, const QString &directory)
{
    askInTurn(state, directory, [](const VMMemoryMap &map, const QString &path) {
        benchmark::DoNotOptimize(map.getCompletionListFromPath(path + u'.'));
    });
}

const bool areRegistered = [] {
    for (const QString &folder : QStringLiteral(CHIP_DIRECTORIES).split(u':', Qt::SkipEmptyParts)) {
        for (const QString &chip : QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
            const QString directory = QDir(folder).filePath(chip);
            if (!QFile::exists(directory + u"/facts.json"_s))
                continue;
            benchmark::RegisterBenchmark(("LookUp/" + chip.toStdString()).c_str(), lookUp, directory);
            benchmark::RegisterBenchmark(("Complete/" + chip.toStdString()).c_str(), complete, directory);
        }
    }
    return true;
}();

} // namespace
