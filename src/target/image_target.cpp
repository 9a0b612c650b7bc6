#include "findings/finding.h"
#include "target/image.h"
#include "target/kinds.h"
#include "text/lines.h"

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// The bytes of a file: image:FILE@ADDRESS. The file changes with flush() alone.
class ImageTarget final : public PlacedTarget {
public:
    explicit ImageTarget(TargetImage image) : m_image(std::move(image)) {}

    qint64 begin() const override { return m_image.begin(); }
    qint64 end() const override { return m_image.end(); }
    QString description() const override { return m_image.description(); }

    TargetAnswer read(quint32 address, std::span<std::byte> bytes, int) override
    {
        return m_image.read(address, bytes) ? TargetAnswer() : outside(address);
    }

    TargetAnswer write(quint32 address, std::span<const std::byte> bytes, int) override
    {
        if (!m_image.write(address, bytes))
            return outside(address);
        m_isChanged = true;
        return {};
    }

    TargetAnswer flush() override
    {
        FindingList findings;
        if (m_isChanged && !m_image.save(findings))
            return noAnswer(findings.findings.last().text());
        m_isChanged = false;
        return {};
    }

private:
    TargetAnswer outside(quint32 address) const
    {
        return notHere(u"0x%1 does not lie in %2"_s.arg(hex8(address), description()));
    }

    TargetImage m_image;
    bool m_isChanged = false;
};

} // namespace

std::unique_ptr<PlacedTarget> makeImageTarget(const TargetWord &word)
{
    const std::optional<PlaceAndAddress> place = placeAndAddress(word.details, std::nullopt);
    if (!place || place->place.isEmpty())
        return refuse(word, u"an image is image:FILE@ADDRESS, with the address of its first byte"_s);
    std::optional<TargetImage> image = TargetImage::open(place->place, place->address, word.sink);
    return image ? std::make_unique<ImageTarget>(*std::move(image)) : nullptr;
}

} // namespace veldmap
