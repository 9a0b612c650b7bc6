#include "access/image_writer.h"
#include "access/target_writer.h"
#include "cli/commands.h"
#include "cli/description.h"
#include "cli/program_rules.h"
#include "cli/session.h"
#include "cli/value_source.h"

namespace veldmap::cli {

namespace {

QList<Assignment> assignmentsOf(const Options &options)
{
    QList<Assignment> assignments;
    for (const QString &word : options.words) {
        const qsizetype sign = word.lastIndexOf(u'=');
        assignments += {word.first(sign), word.sliced(sign + 1), options.force};
    }
    return assignments;
}

ExitStatus writeImage(const Options &options, Session &session)
{
    std::optional<TargetImage> image = TargetImage::open(options.image->file, options.image->address, session.messages);
    if (!image)
        return kFailed;
    ImageWriter writer(session.map, std::move(*image), session.messages);
    bool isComplete = true;
    for (const Assignment &assignment : assignmentsOf(options))
        isComplete = writer.assign(assignment) && isComplete;
    return isComplete && writer.save() ? kDone : kFailed;
}

ExitStatus writeTarget(const Options &options, Session &session)
{
    const std::unique_ptr<Target> target = openTarget(options, session);
    if (!target)
        return kFailed;
    TargetWriter writer(session.map, *target, session.messages);
    writer.verifies = options.verifies;
    return writer.write(assignmentsOf(options)) ? kDone : kFailed;
}

} // namespace

ExitStatus write(const Options &options, Session &session)
{
    for (const QString &assignment : options.words) {
        if (!assignment.contains(u'=')) {
            session.messages.tell(rules::kNoAssignment, {assignment});
            return kWrongUsage;
        }
    }
    if (!options.namesTarget()) {
        session.messages.tell(rules::kNoTargetGiven);
        return kWrongUsage;
    }
    if (!loadDescriptions(options, session))
        return kFailed;
    return options.image ? writeImage(options, session) : writeTarget(options, session);
}

} // namespace veldmap::cli
