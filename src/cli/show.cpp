#include "cli/commands.h"
#include "cli/description.h"
#include "cli/element_text.h"
#include "cli/messages.h"
#include "cli/paths.h"
#include "cli/target_image.h"
#include "cli/tree_json.h"
#include "model/aggregates.h"
#include "model/memory_map.h"
#include "model/valuable.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

bool canBeRead(const VMValuable &valuable)
{
    return valuable.readable && !valuable.readError;
}

bool canBeRead(const VMBitField &field)
{
    const auto *valuable = elementCast<VMValuable>(field.parent);
    return field.readable && valuable && canBeRead(*valuable);
}

/// A value in hexadecimal with all digits of its width; behind it the value as the description wants it displayed, if
/// that is another notation.
QString valueText(const VMValuable &valuable)
{
    if (!canBeRead(valuable))
        return u"?"_s;
    const int digits = 2 * valuable.sizeOf();
    const QString hex =
        "0x"_L1 + QString::number(valuable.getValue(), 16).toUpper().right(digits).rightJustified(digits, u'0');
    return valuable.displayType == DISPLAY_HEX ? hex : hex + " = "_L1 + valuable.getValueString(DISPLAY_DEFAULT);
}

/// The values of elements, which have been read from an image.
struct ValueNotes final : ElementNotes {
    QString ofElement(const VMXMLElement &element) const override
    {
        const auto *valuable = elementCast<VMValuable>(&element);
        return valuable ? "= "_L1 + valueText(*valuable) : QString();
    }
    QString ofField(const VMBitField &field) const override
    {
        return "= "_L1 + (canBeRead(field) ? field.getValueString(DISPLAY_DEFAULT, false, false) : u"?"_s);
    }
};

/// Reads all values of \a element and of what it holds; what does not lie in \a image has a read error afterwards.
void readValues(VMXMLElement &element, const TargetImage &image)
{
    if (auto *valuable = elementCast<VMValuable>(&element))
        image.read(*valuable);
    else if (auto *structure = elementCast<VMStruct>(&element))
        std::ranges::for_each(structure->memberList, [&](auto &member) { readValues(*member, image); });
    else if (auto *array = elementCast<VMArray>(&element))
        std::ranges::for_each(array->memberList, [&](auto &member) { readValues(*member, image); });
}

void readThroughPointers(VMXMLElement &element, const TargetImage &image)
{
    VMXMLElement &holder = elementCast<VMBitField>(&element) ? *element.parent : element;
    if (image.followPointersTo(holder))
        readValues(holder, image);
    else
        holder.setReadError(true);
}

QJsonValue valueJson(const VMXMLElement &element)
{
    const auto *valuable = elementCast<VMValuable>(&element);
    if (valuable && canBeRead(*valuable))
        return static_cast<qint64>(valuable->getValue());
    const auto *field = elementCast<VMBitField>(&element);
    if (field && canBeRead(*field))
        return static_cast<qint64>(field->getValue());
    return {};
}

QString textOf(const VMXMLElement &element, const QString &path, const Options &options)
{
    const ValueNotes values;
    const OptionNotes names;
    const ElementNotes &notes = options.image.has_value() ? static_cast<const ElementNotes &>(values) : names;
    QString text;
    if (const auto *field = elementCast<VMBitField>(&element))
        appendFieldAlone(text, *field, notes);
    else
        appendElement(text, element, element.getPath().isEmpty() ? path : element.getPath(), 0,
                      options.recursive ? kAllLevels : 1, notes);
    return text;
}

} // namespace

ExitStatus show(const Options &options)
{
    VMMemoryMap &map = processMemoryMap();
    if (!loadDescriptions(options, map))
        return kFailed;
    std::optional<TargetImage> image;
    if (options.image && !(image = TargetImage::open(options.image->file, options.image->address)))
        return kFailed;
    QString text;
    QJsonArray objects;
    bool isComplete = true;
    for (const QString &path : options.words) {
        VMXMLElement *element = findElement(map, path);
        if (!element) {
            isComplete = false;
            objects.append(QJsonObject{{u"path"_s, path}, {u"error"_s, u"no such element"_s}});
            continue;
        }
        if (image)
            readThroughPointers(*element, *image);
        if (!options.json) {
            text += textOf(*element, path, options);
            continue;
        }
        QJsonObject object = elementJson(*element);
        if (image)
            object[u"value"_s] = valueJson(*element);
        objects.append(object);
    }
    const bool printed = options.json ? printResult(QJsonDocument(objects).toJson()) : printResult(text);
    return printed && isComplete ? kDone : kFailed;
}

} // namespace veldmap::cli
