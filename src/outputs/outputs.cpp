#include "outputs/outputs.h"

#include "model/memory_map.h"
#include "outputs/output_jobs.h"
#include "outputs/output_run.h"

namespace veldmap {

namespace {

struct OutputRow {
    Output output;
    OutputJobs (*jobs)(const VMMemoryMap &map, const VMRootArchive &root, const OutputOptions &options);
    bool isOfChip; ///< there is none of the software
};
constexpr OutputRow kOutputs[] = {
    {Output::Headers,
     [](const VMMemoryMap &map, const VMRootArchive &root, const OutputOptions &options) {
         return headerJobs(root, options, map.skipUpToDate);
     },
     false},
    {Output::Vhdl,
     [](const VMMemoryMap &, const VMRootArchive &root, const OutputOptions &options) {
         return vhdlJobs(root, options);
     },
     true},
    {Output::Docs,
     [](const VMMemoryMap &, const VMRootArchive &root, const OutputOptions &options) {
         return siteJobs(root, options);
     },
     false},
};

} // namespace

OutputFiles writeOutput(const VMMemoryMap &map, Output output, const OutputOptions &options, Sink &sink)
{
    const OutputRow &row = *std::ranges::find(kOutputs, output, &OutputRow::output);
    const VMRootArchive *root = options.chip || row.isOfChip ? map.chipRootArchive : map.softRootArchive;
    return root ? runJobs(row.jobs(map, *root, options), options, sink) : OutputFiles();
}

} // namespace veldmap
