// Runs a fuzz target on the files that are named and on those of the directories that are, for a build without
// libFuzzer. Each file is named before, so that the last one is at fault where a run does not come to its end.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace {

void replay(const std::filesystem::path &path)
{
    std::printf("%s\n", path.c_str());
    std::fflush(stdout);
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size());
}

} // namespace

int main(int argc, char **argv)
{
    int inputs = 0;
    for (int at = 1; at < argc; ++at) {
        if (!std::filesystem::is_directory(argv[at])) {
            replay(argv[at]);
            ++inputs;
            continue;
        }
        for (const auto &entry : std::filesystem::directory_iterator(argv[at])) {
            replay(entry.path());
            ++inputs;
        }
    }
    std::printf("%d inputs\n", inputs);
    return inputs > 0 ? 0 : 1;
}
