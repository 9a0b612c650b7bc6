#include "cli/endings.h"
#include "cli/options.h"
#include "cli/session.h"

#include <cstdlib> // also says whether the C library is glibc

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {

/// A load takes and frees a document for each file. Memory that goes back to the system in between comes as fresh pages
/// each time, which is a tenth of the run.
void keepFreedMemory()
{
#ifdef __GLIBC__
    constexpr int kLargePiece = 64 * 1024 * 1024;
    mallopt(M_MMAP_THRESHOLD, kLargePiece);
    mallopt(M_TRIM_THRESHOLD, kLargePiece);
    mallopt(M_TOP_PAD, kLargePiece / 8);
#endif
}

} // namespace

int main(int argc, char **argv)
{
    keepFreedMemory();
    veldmap::cli::prepareForEndings();
    veldmap::cli::Session session;
    // The tree ends with the process: to take a million elements apart would only delay it.
    std::exit(veldmap::cli::runCommandLine(argc, argv, session));
}
