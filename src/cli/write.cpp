#include "cli/commands.h"
#include "cli/description.h"
#include "cli/messages.h"
#include "cli/numbers.h"
#include "cli/paths.h"
#include "cli/target_image.h"
#include "text/bit_arithmetic.h"
#include "model/memory_map.h"
#include "model/valuable.h"

#include <QSet>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

constexpr int kSetMode = 2;
constexpr int kClearMode = 3;

/// Writes into an image, one assignment after the other. What an assignment asks is checked before any byte changes,
/// and nothing reaches the file before save().
class ImageWriter {
public:
    ImageWriter(const VMMemoryMap &map, TargetImage image, bool force)
        : m_map(map), m_image(std::move(image)), m_force(force)
    {
    }

    /// Sets the element at \a path to \a value; false, with an error told, when that can't be done.
    bool assign(const QString &path, const QString &value)
    {
        VMXMLElement *element = findElement(m_map, path);
        if (!element)
            return false;
        auto *field = elementCast<VMBitField>(element);
        auto *valuable = elementCast<VMValuable>(field ? field->parent : element);
        if (!valuable)
            return refuse(path, u"it has no value of its own; name a register, an integer or a field in it"_s);
        if (!m_image.followPointersTo(*valuable) || !m_image.read(*valuable))
            return refuse(path, u"it does not lie in %1"_s.arg(m_image.description()));
        return field ? assignField(*field, *valuable, path, value) : assignWhole(*valuable, path, value);
    }

    [[nodiscard]] bool save() const { return m_image.save(); }

private:
    bool assignWhole(VMValuable &valuable, const QString &path, const QString &value)
    {
        if (!valuable.writable && !m_force)
            return refuse(path, u"it is not writable; --force writes it all the same"_s);
        const std::optional<qint64> number = numberOf(value);
        if (!number)
            return refuse(path, u"'%1' is no number"_s.arg(value));
        const int width = valuable.getBitSize();
        // 0xFE is a pattern of 8 bits also where it means -2.
        const bool isPattern = value.startsWith("0x"_L1) || value.startsWith("0b"_L1);
        const qint64 greatest = lowBits(valuable.isSigned() && !isPattern ? width - 1 : width);
        const qint64 least = valuable.isSigned() ? -qint64(lowBits(width - 1)) - 1 : 0;
        if (*number < least || *number > greatest)
            return refuse(path, u"%1 does not fit into %2 bits"_s.arg(value, QString::number(width)));
        put(valuable, static_cast<unsigned int>(*number));
        return true;
    }

    bool assignField(const VMBitField &field, VMValuable &valuable, const QString &path, const QString &value)
    {
        if (field.writeMode == 0 && !m_force)
            return refuse(path, u"it is not writable; --force writes it all the same"_s);
        const std::optional<qint64> number = fieldNumber(field, value);
        if (!number)
            return refuse(path, u"'%1' is neither a number nor one of its options"_s.arg(value));
        const bool isAction = field.writeMode == kSetMode || field.writeMode == kClearMode;
        if (isAction && *number != 1)
            return refuse(path, u"it takes no value but 1, which %1 it"_s.arg(
                                    field.writeMode == kSetMode ? u"sets"_s : u"clears"_s));
        // Bits of the field outside its register hold nothing.
        const quint32 mask = field.getFullValueUnshifted() & lowBits(valuable.getBitSize());
        const quint32 moved =
            *number < 0 || *number > 0xFFFFFFFF ? 0 : shiftLeft(static_cast<quint32>(*number), field.downPos) & mask;
        if (*number < 0 || shiftRight(moved, field.downPos) != *number)
            return refuse(path, u"%1 does not fit into bits %2 to %3 of %4 bits"_s.arg(
                                    value, QString::number(field.upPos), QString::number(field.downPos),
                                    QString::number(valuable.getBitSize())));
        put(valuable, (baseOf(valuable) & ~mask) | moved);
        return true;
    }

    /// The number that \a value stands for: itself, or that of the option of this name.
    static std::optional<qint64> fieldNumber(const VMBitField &field, const QString &value)
    {
        if (const std::optional<qint64> number = numberOf(value))
            return number;
        const auto option = std::ranges::find(field.options.optionList, value, &VMBitFieldOption::name);
        return option == field.options.optionList.end() ? std::nullopt
                                                        : std::optional<qint64>(static_cast<quint32>(option->value));
    }

    /// The value of a register, which has been read, for changing a field in it: without the actions that reading back
    /// and writing would repeat. Assignments of one command to one register are one write, so its own actions stay.
    quint32 baseOf(const VMValuable &valuable) const
    {
        return m_written.contains(valuable.getBaseAddress()) ? valuable.getValue()
                                                             : valuable.getValueForWritingBitfield();
    }

    void put(VMValuable &valuable, quint32 value)
    {
        valuable.setValue(value);
        m_image.write(valuable);
        m_written.insert(valuable.getBaseAddress());
    }

    static bool refuse(const QString &path, const QString &reason)
    {
        printError(u"%1 can't be written: %2."_s.arg(path, reason));
        return false;
    }

    const VMMemoryMap &m_map;
    TargetImage m_image;
    bool m_force;
    QSet<quint32> m_written; // addresses; two paths may lead to one
};

} // namespace

ExitStatus write(const Options &options)
{
    for (const QString &assignment : options.words) {
        if (!assignment.contains(u'=')) {
            printError(u"'%1' does not say what to write: PATH=VALUE."_s.arg(assignment));
            return kWrongUsage;
        }
    }
    VMMemoryMap &map = processMemoryMap();
    if (!loadDescriptions(options, map))
        return kFailed;
    std::optional<TargetImage> image = TargetImage::open(options.image->file, options.image->address);
    if (!image)
        return kFailed;
    ImageWriter writer(map, std::move(*image), options.force);
    bool isComplete = true;
    for (const QString &assignment : options.words) {
        const qsizetype sign = assignment.lastIndexOf(u'=');
        isComplete = writer.assign(assignment.first(sign), assignment.sliced(sign + 1)) && isComplete;
    }
    return isComplete && writer.save() ? kDone : kFailed;
}

} // namespace veldmap::cli
