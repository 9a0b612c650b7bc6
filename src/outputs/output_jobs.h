#pragma once

#include "outputs/output_job.h"

class VMMemoryMap;
class VMRootArchive;
class VMXMLElement;

namespace veldmap {

struct OutputOptions;

// The jobs of the outputs. They read \a root when they are done, so it must outlive them and stay as it is.

/// The C header and, where asked for, the assembly header of each description.
OutputJobs headerJobs(const VMMemoryMap &map, const VMRootArchive &root, const OutputOptions &options);
/// The header of functions of each description.
OutputJobs accessorJobs(const VMRootArchive &root, const OutputOptions &options);
/// The header of the words that headers use.
OutputJobs typesJobs(const VMRootArchive &root, const OutputOptions &options);
/// The C and the assembly header of the global variables of \a map, which must outlive the jobs.
OutputJobs globalsJobs(const VMMemoryMap &map, const VMRootArchive &root, const OutputOptions &options);
/// The package of each description of the chip.
OutputJobs vhdlJobs(const VMRootArchive &root, const OutputOptions &options);
/// The fixed files of the site, then its menu, frames and pages.
OutputJobs siteJobs(const VMRootArchive &root, const OutputOptions &options);
/// The pages of the reference manual of all roots of \a map, which must outlive the jobs too.
OutputJobs manualJobs(const VMMemoryMap &map, const OutputOptions &options);

// Parts of a site, which a host may ask for one by one.

OutputJobs poolJobs(const OutputOptions &options);
OutputJob menuJob(const VMRootArchive &root, const OutputOptions &options);
OutputJob startPageJob(const VMRootArchive &root, const OutputOptions &options);
OutputJob framesJob(const VMRootArchive &root, const OutputOptions &options);

} // namespace veldmap
