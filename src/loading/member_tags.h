#pragma once

#include "loading/archive_loader.h"
#include "model/bitfield.h"
#include "xml/tag_attributes.h"

/// A tag that makes a member of a structure, and the places besides a struct where it may stand.
struct VMArchiveLoader::MemberTagRow {
    using Read = VMXMLElement *(VMArchiveLoader::*)(const veldmap::Tag &, VMXMLArchive *, const QString &);

    QLatin1StringView tag;
    Read read; ///< null for a valuable
    bool isValuable;
    bool inModule;
    bool inAlias;
};

namespace veldmap {

/// "bin", "hex", or anything else for decimal.
inline DisplayType displayOf(QStringView word)
{
    if (word == QLatin1StringView("bin"))
        return DISPLAY_BIN;
    return word == QLatin1StringView("hex") ? DISPLAY_HEX : DISPLAY_DEC;
}

} // namespace veldmap
