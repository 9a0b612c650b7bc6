// The trees of real chips against the facts that stand beside their descriptions: paths, values and images.

#include "loading/memory_map_loader.h"
#include "model/aggregates.h"
#include "model/pointer.h"
#include "support/loaded.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <cstring>
#include <random>

using namespace Qt::StringLiterals;

namespace {

/// A chip that is loaded, and its facts.
struct Chip {
    explicit Chip(const QString &directory)
    {
        map.chipRootArchive = VMMemoryMapLoader().loadRootArchiveFromFile(&map, directory + u"/soc.xml"_s, nullptr,
                                                                          nullptr, nullptr, true);
        facts = QJsonDocument::fromJson(readFile(directory + u"/facts.json"_s).toUtf8()).object();
        for (const QJsonValue type : facts[u"types"_s].toArray())
            typesByName[type[u"name"_s].toString()] = type.toObject();
    }

    VMMemoryMap map;
    QJsonObject facts;
    QHash<QString, QJsonObject> typesByName;
};

/// The chip among the examples, and those that the build names.
QStringList chipDirectories()
{
    QStringList directories;
    for (const QString &folder : QStringLiteral(CHIP_DIRECTORIES).split(u':', Qt::SkipEmptyParts)) {
        for (const QString &name : QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot))
            if (const QString directory = QDir(folder).filePath(name); QFile::exists(directory + u"/facts.json"_s))
                directories += directory;
    }
    return directories;
}

class RealChips : public testing::Test {
protected:
    void SetUp() override
    {
        for (const QString &directory : chipDirectories())
            chips.push_back(std::make_unique<Chip>(directory));
        ASSERT_FALSE(chips.empty());
    }
    std::vector<std::unique_ptr<Chip>> chips;
};

/// The path of each single register of the places that \a path of a type stands for: [%] is any index.
QString withoutIndexes(const QString &path)
{
    static const QRegularExpression index(u"\\[\\d+\\]"_s); // a[3].b gives a[%].b, a.b stays
    return QString(path).replace(index, u"[%]"_s);
}

} // namespace

TEST_F(RealChips, ImagesPassThroughTheTree)
{
    std::mt19937 random(20'240'311);
    for (const auto &chip : chips) {
        int fields = 0;
        for (const QJsonValue instanceFacts : chip->facts[u"instances"_s].toArray()) {
            VMXMLElement *instance = chip->map.getElementFromPath(u'$' + instanceFacts[u"name"_s].toString());
            ASSERT_TRUE(instance);
            QByteArray image(instance->sizeOf(), '\0');
            std::ranges::generate(image, [&] { return static_cast<char>(random()); });
            QByteArray low(image.size(), '\x5a');
            QByteArray high(image.size(), '\xa5');
            instance->memSet(reinterpret_cast<unsigned char *>(image.data()));
            instance->memGet(reinterpret_cast<unsigned char *>(low.data()));
            instance->memGet(reinterpret_cast<unsigned char *>(high.data()));

            QHash<QString, QJsonArray> fieldsOfRegister;
            for (const QJsonValue reg :
                 chip->typesByName[instanceFacts[u"type"_s].toString()][u"registers"_s].toArray())
                fieldsOfRegister[reg[u"path"_s].toString()] = reg[u"fields"_s].toArray();
            QByteArray covered(image.size(), '\0');
            for (const QJsonValue reg : instanceFacts[u"registers"_s].toArray()) {
                const QString path = reg[0].toString();
                const auto place = static_cast<qsizetype>(reg[1].toDouble()) - instance->getBaseAddress();
                const qsizetype bytes = reg[2].toInt() / 8;
                ASSERT_LE(place + bytes, image.size());
                covered.replace(place, bytes, QByteArray(bytes, '\1'));
                quint32 word = 0;
                std::memcpy(&word, image.constData() + place, static_cast<std::size_t>(bytes));
                const QString inType = withoutIndexes(path.section(u'.', 1));
                ASSERT_TRUE(fieldsOfRegister.contains(inType)) << path.toStdString();
                for (const QJsonValue fact : fieldsOfRegister[inType]) {
                    const QString fieldPath = path + u'.' + fact[u"name"_s].toString();
                    const auto *field = elementCast<VMBitField>(chip->map.getElementFromPath(fieldPath));
                    ASSERT_TRUE(field) << fieldPath.toStdString();
                    const auto mask = static_cast<quint32>(fact[u"mask"_s].toDouble());
                    EXPECT_EQ(field->getValue(), (word & mask) >> fact[u"shift"_s].toInt()) << fieldPath.toStdString();
                    ++fields;
                }
            }
            for (qsizetype at = 0; at < image.size(); ++at) {
                const bool isUntouched = low[at] == '\x5a' && high[at] == '\xa5'; // padding or memory
                const bool isHole = low[at] == '\xff' && high[at] == '\xff';
                const bool isSame = low[at] == image[at] && high[at] == image[at];
                ASSERT_TRUE(covered[at] ? isSame : isUntouched || isHole)
                    << instance->getPath().toStdString() << " at " << at;
            }
        }
        EXPECT_GT(fields, 0);
    }
}
