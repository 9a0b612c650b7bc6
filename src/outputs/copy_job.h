#pragma once

#include "outputs/output_job.h"

namespace veldmap {

struct OutputOptions;

/// A job for \a file of an output's fixed files, which is copied as it lies in the pool of \a options.
OutputJob copyJob(const OutputOptions &options, const QString &file);

} // namespace veldmap
