#include "access/search.h"
#include "cli/commands.h"
#include "cli/description.h"
#include "cli/program_rules.h"
#include "cli/result.h"
#include "cli/session.h"
#include "export/tree_json.h"
#include "export/tree_text.h"
#include "model/bitfield.h"
#include "text/literals.h"

namespace veldmap::cli {

namespace {

QString lineOf(const VMXMLElement &element)
{
    QString line;
    if (const auto *field = elementCast<VMBitField>(&element))
        appendFieldAlone(line, *field, OptionNotes());
    else
        appendElement(line, element, element.getPath(), 0, 0, OptionNotes());
    return line;
}

} // namespace

ExitStatus find(const Options &options, Session &session)
{
    if (!loadDescriptions(options, session))
        return kFailed;
    const QString &word = options.words.first();
    const std::optional<quint32> address = addressOf(word);
    const QList<VMXMLElement *> found = address ? elementsAt(session.map, *address) : findElements(session.map, word);
    if (found.isEmpty())
        session.messages.tell(address ? rules::kNothingAt : rules::kNothingFound, {word});
    Result result(options.output.mostBytes, session.messages);
    ResultList list(result);
    for (const VMXMLElement *element : found) {
        if (!(options.json ? list.append(elementJson(*element)) : result.print(lineOf(*element))))
            break;
    }
    if (options.json)
        list.finish();
    return result.finish() && !found.isEmpty() ? kDone : kFailed;
}

} // namespace veldmap::cli
