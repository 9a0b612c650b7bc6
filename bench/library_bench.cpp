// What loading, evaluating, looking up and generating cost, by the size of the description.

#include "container/aes_chaining.h"
#include "loading/memory_map_loader.h"
#include "model/archive.h"
#include "model/memory_map.h"
#include "model/root_archive.h"

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <fstream>
#include <vector>

namespace {

/// A module with \a registers registers of two bitfields each, and one instance of it.
std::string description(int registers)
{
    std::string text = "<archive><var name='BASE' value='0x40000000'/><module name='m'>\n";
    for (int at = 0; at < registers; ++at) {
        const std::string number = std::to_string(at);
        text += "<reg32 name='reg" + number + "' protect='rw'><comment>Register number " + number +
                "</comment><bits name='enable" + number + "' pos='0' access='rw' rst='0'/><bits name='speed" + number +
                "' pos='7:4' access='rw' rst='0x3'><options><mask/><option name='slow' value='0'/></options></bits>"
                "</reg32>\n";
    }
    return text + "</module><instance name='M' type='m' address='BASE+0x1000'/></archive>";
}

/// A description on disk, and the memory map that it was loaded into.
class Description {
public:
    explicit Description(int registers)
    {
        std::ofstream(path().toStdString()) << description(registers);
        load(map);
    }

    void load(VMMemoryMap &into) const
    {
        into.chipRootArchive =
            VMMemoryMapLoader().loadRootArchiveFromFile(&into, path(), nullptr, nullptr, nullptr, true);
    }

    VMMemoryMap map;

private:
    QString path() const { return m_directory.filePath(QStringLiteral("soc.xml")); }

    QTemporaryDir m_directory;
};

void Load(benchmark::State &state)
{
    const Description description(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        VMMemoryMap map;
        description.load(map);
        benchmark::DoNotOptimize(map.chipRootArchive);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void Generate(benchmark::State &state)
{
    const Description description(static_cast<int>(state.range(0)));
    const VMXMLArchive &archive = *description.map.chipRootArchive->xmlArchives.first();
    for (auto _ : state) {
        benchmark::DoNotOptimize(archive.asm_content());
        benchmark::DoNotOptimize(archive.templates.front()->c_typedefSerialize());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void Evaluate(benchmark::State &state)
{
    const Description description(1);
    const VMVariableManager &variables = *description.map.chipRootArchive->xmlArchives.first()->variables;
    const QString expression = QStringLiteral("(BASE+0x10)*2-exp2(4)");
    QString message;
    bool error = false;
    for (auto _ : state)
        benchmark::DoNotOptimize(variables.evalExpression(expression, message, error));
    state.SetItemsProcessed(state.iterations());
}

void FindTemplate(benchmark::State &state)
{
    const Description description(static_cast<int>(state.range(0)));
    const QString type = QStringLiteral("m");
    for (auto _ : state)
        benchmark::DoNotOptimize(description.map.chipRootArchive->getTemplate(type));
    state.SetItemsProcessed(state.iterations());
}

using Cipher = int(unsigned char *in, unsigned char *out, int length, unsigned char *iv, unsigned char *key);

int encryptByTables(unsigned char *in, unsigned char *out, int length, unsigned char *iv, unsigned char *key)
{
    RijndaelKey schedule;
    rijndael_set_key(&schedule, key, 256, RijndaelDirection::Encrypt);
    veldmap::encryptByTables(schedule, in, out, length / 16, iv);
    return 1;
}

int decryptByTables(unsigned char *in, unsigned char *out, int length, unsigned char *iv, unsigned char *key)
{
    RijndaelKey schedule;
    rijndael_set_key(&schedule, key, 256, RijndaelDirection::Decrypt);
    veldmap::decryptByTables(schedule, in, out, length / 16, iv);
    return 1;
}

/// Enciphers or deciphers one megabyte in its place.
void Aes(benchmark::State &state, Cipher *cipher)
{
    std::vector<unsigned char> bytes(1 << 20);
    unsigned char vector[16] = {1};
    unsigned char key[32] = {2};
    for (auto _ : state) {
        cipher(bytes.data(), bytes.data(), static_cast<int>(bytes.size()), vector, key);
        benchmark::DoNotOptimize(bytes.data());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
}

} // namespace

BENCHMARK(Load)->Arg(1000)->Arg(2000)->Arg(4000)->Unit(benchmark::kMillisecond);
BENCHMARK(Generate)->Arg(1000)->Arg(2000)->Arg(4000)->Unit(benchmark::kMillisecond);
BENCHMARK(Evaluate);
BENCHMARK(FindTemplate)->Arg(1000);
BENCHMARK_CAPTURE(Aes, AES_Encrypt, AES_Encrypt);
BENCHMARK_CAPTURE(Aes, AES_Decrypt, AES_Decrypt);
BENCHMARK_CAPTURE(Aes, encryptByTables, encryptByTables);
BENCHMARK_CAPTURE(Aes, decryptByTables, decryptByTables);
