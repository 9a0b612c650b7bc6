#include "cli/options.h"

int main(int argc, char **argv)
{
    return veldmap::cli::runCommandLine(argc, argv);
}
