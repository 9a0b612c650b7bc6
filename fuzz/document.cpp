// Reads any bytes with both readers of documents, which must make the same of them.

#include "xml/tag_document.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

using veldmap::Tag;
using veldmap::TagDocument;

namespace {

void expect(bool holds)
{
    if (!holds)
        std::abort();
}

void compare(const Tag &left, const Tag &right)
{
    expect(left.number() == right.number() && left.name() == right.name());
    expect(left.nameAsWritten() == right.nameAsWritten() && left.plainText() == right.plainText());
    expect(left.lineNumber() == right.lineNumber() && left.columnNumber() == right.columnNumber());
    expect(std::ranges::equal(left.attributes(), right.attributes(),
                              [](const auto &a, const auto &b) { return a.name == b.name && a.value == b.value; }));
    Tag of = right.firstChild();
    for (Tag child = left.firstChild(); !child.isNull(); child = child.nextSibling(), of = of.nextSibling()) {
        expect(!of.isNull());
        compare(child, of);
    }
    expect(of.isNull());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const auto bytes = QByteArray::fromRawData(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    TagDocument plain;
    TagDocument any;
    if (!plain.readPlain(bytes))
        return 0;
    expect(!any.readAny(bytes));
    compare(plain.root(), any.root());
    expect(plain.root().serialized() == any.root().serialized());
    expect(std::ranges::equal(plain.notes(), any.notes(), [](const auto &a, const auto &b) {
        return a.text == b.text && a.line == b.line && a.column == b.column && a.tag == b.tag;
    }));
    return 0;
}
