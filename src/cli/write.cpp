#include "access/image_writer.h"
#include "cli/commands.h"
#include "cli/description.h"
#include "cli/program_rules.h"
#include "cli/session.h"

namespace veldmap::cli {

ExitStatus write(const Options &options, Session &session)
{
    for (const QString &assignment : options.words) {
        if (!assignment.contains(u'=')) {
            session.messages.tell(rules::kNoAssignment, {assignment});
            return kWrongUsage;
        }
    }
    if (!loadDescriptions(options, session))
        return kFailed;
    std::optional<TargetImage> image = TargetImage::open(options.image->file, options.image->address, session.messages);
    if (!image)
        return kFailed;
    ImageWriter writer(session.map, std::move(*image), session.messages);
    bool isComplete = true;
    for (const QString &word : options.words) {
        const qsizetype sign = word.lastIndexOf(u'=');
        isComplete = writer.assign({word.first(sign), word.sliced(sign + 1), options.force}) && isComplete;
    }
    return isComplete && writer.save() ? kDone : kFailed;
}

} // namespace veldmap::cli
