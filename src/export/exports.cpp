#include "export/exports.h"

#include "export/fields_csv.h"
#include "export/ipxact_text.h"
#include "export/map_json.h"
#include "export/svd_text.h"
#include "export/systemrdl_text.h"

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

constexpr ExportFormat kFormats[] = {
    {"svd"_L1, "CMSIS-SVD 1.3, for debuggers"_L1, svdText},
    {"ipxact"_L1, "IP-XACT component, IEEE 1685-2014"_L1, ipxactText},
    {"systemrdl"_L1, "SystemRDL 2.0, for verification"_L1, systemRdlText},
    {"json"_L1, "every register with its fields, for programs"_L1, mapJson},
    {"csv"_L1, "one line a field, for spreadsheets"_L1, fieldsCsv},
};

} // namespace

std::span<const ExportFormat> exportFormats()
{
    return kFormats;
}

const ExportFormat *findExportFormat(const QString &name)
{
    const auto row = std::ranges::find(kFormats, name, &ExportFormat::name);
    return row == std::end(kFormats) ? nullptr : row;
}

} // namespace veldmap
