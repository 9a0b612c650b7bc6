#include "outputs/outputs.h"

#include "model/memory_map.h"
#include "outputs/output_jobs.h"
#include "outputs/output_run.h"

namespace veldmap {

namespace {

struct OutputRow {
    Output output;
    OutputJobs (*jobs)(const VMMemoryMap &map, const VMRootArchive &root, const OutputOptions &options);
    bool isOfChip;        ///< there is none of the software
    bool isOfAll = false; ///< it shows both roots
};
constexpr OutputRow kOutputs[] = {
    {Output::Headers, headerJobs, false},
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
    {Output::Types,
     [](const VMMemoryMap &, const VMRootArchive &root, const OutputOptions &options) {
         return typesJobs(root, options);
     },
     false},
    {Output::Accessors,
     [](const VMMemoryMap &, const VMRootArchive &root, const OutputOptions &options) {
         return accessorJobs(root, options);
     },
     false},
    {Output::Globals, globalsJobs, false},
    {Output::Site,
     [](const VMMemoryMap &map, const VMRootArchive &, const OutputOptions &options) {
         return manualJobs(map, options);
     },
     true, true},
};

/// The jobs of \a output, none where its root is not loaded.
OutputJobs jobsOf(const VMMemoryMap &map, Output output, const OutputOptions &options)
{
    const OutputRow &row = *std::ranges::find(kOutputs, output, &OutputRow::output);
    const VMRootArchive *root = options.chip || row.isOfChip ? map.chipRootArchive : map.softRootArchive;
    if (!root && row.isOfAll)
        root = map.softRootArchive;
    return root ? row.jobs(map, *root, options) : OutputJobs();
}

} // namespace

OutputFiles writeOutput(const VMMemoryMap &map, Output output, const OutputOptions &options, Sink &sink)
{
    return runJobs(jobsOf(map, output, options), options, sink);
}

QStringList pathsOf(const VMMemoryMap &map, Output output, const OutputOptions &options)
{
    QStringList paths;
    for (const OutputJob &job : jobsOf(map, output, options)) {
        if (job.refusal.isEmpty())
            paths << job.path << job.further;
    }
    paths.removeDuplicates();
    return paths;
}

} // namespace veldmap
