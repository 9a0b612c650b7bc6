#include "access/search.h"
#include "cli/commands.h"
#include "cli/description.h"
#include "cli/program_rules.h"
#include "cli/session.h"
#include "export/tree_json.h"
#include "export/tree_text.h"
#include "model/bitfield.h"
#include "text/literals.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace veldmap::cli {

ExitStatus find(const Options &options, Session &session)
{
    if (!loadDescriptions(options, session))
        return kFailed;
    const QString &word = options.words.first();
    const std::optional<quint32> address = addressOf(word);
    const QList<VMXMLElement *> found = address ? elementsAt(session.map, *address) : findElements(session.map, word);
    QString text;
    QJsonArray objects;
    for (const VMXMLElement *element : found) {
        const auto *field = elementCast<VMBitField>(element);
        if (options.json)
            objects.append(elementJson(*element));
        else if (field)
            appendFieldAlone(text, *field, OptionNotes());
        else
            appendElement(text, *element, element->getPath(), 0, 0, OptionNotes());
    }
    if (found.isEmpty())
        session.messages.tell(address ? rules::kNothingAt : rules::kNothingFound, {word});
    const bool printed = printResult(options.json ? QJsonDocument(objects).toJson() : text.toUtf8(), session.messages);
    return printed && !found.isEmpty() ? kDone : kFailed;
}

} // namespace veldmap::cli
