#pragma once

#include <QtGlobal>

/// Every resource limit of a load and of what is made of it. Each lies far above what a real chip needs; one that is
/// exceeded is an error at the tag concerned. They keep a small file from taking more than a moment or a few hundred
/// megabytes.
namespace veldmap::limits {

/// Bytes of one description file. The document takes some twenty times as much memory; the largest descriptions of
/// whole chips have about 20 MB in a single file.
constexpr qint64 kDocumentBytes = 256 * 1024 * 1024;

/// Tags of one description file, each of which takes about a hundred bytes while the file is read. The largest files
/// have some 300,000.
constexpr qint64 kDocumentTags = 4'000'000;

/// Characters by which the entities of one document may enlarge it, and those of all documents what a load keeps of
/// them. Descriptions use entities for a few words.
constexpr qint64 kEntityCharacters = 8 * 1024 * 1024;

/// Tags inside tags. The XML reader takes time that grows with the square of the depth, and documents and structures
/// are walked by recursion. Real descriptions nest about ten deep.
constexpr int kTagDepth = 256;

/// Attributes of one tag. The XML reader takes time that grows with the square of their number; no tag has twenty.
constexpr int kTagAttributes = 1024;

/// Characters of a name. Messages and generated names repeat it; compilers tell names apart by far fewer.
constexpr qsizetype kNameCharacters = 4096;

/// Characters of the names of an element and of all that it lies in, which stand in its path, and in what is generated
/// of it. Real ones have some hundred.
constexpr qsizetype kPathCharacters = 16 * 1024;

/// Instances of types inside types. Copies and all output walk them by recursion.
constexpr int kTypeDepth = 256;

/// Files that include one another, one inside the other. Each holds its document while the inner one loads. Real
/// descriptions go about five deep.
constexpr int kIncludeDepth = 256;

/// Archives of one load. A file that gives itself another name is read anew at each include, so that a few dozen files
/// could be read without end; real chips have some hundreds.
constexpr qsizetype kArchives = 10'000;

/// Elements in one array, those inside its members and their bitfields included. An element takes about 350 bytes;
/// tables beyond this are described as memory.
constexpr qint64 kArrayElements = 256 * 1024;

/// Elements that one load makes by copying: instances, array members, pieces of cut bitfields, options of linked enums,
/// and files that are read again under other names. A small description may make this many; the bytes of the files
/// allow for more, so that memory grows with the description: a megabyte of it may become a million elements, seven
/// megabytes four millions. In real chips there are about five copies of an element, which is declared in some hundred
/// bytes. Tags that a host hands over one by one have no bytes: there each element allows for some copies.
constexpr qint64 kCopiedElements = 448 * 1024;
constexpr qint64 kBytesPerCopy = 2;
constexpr qint64 kCopiesPerElement = 32;

/// Characters of names, positions and tables of options that one load makes of shorter texts, for each element that it
/// may make by copying: the name of an array stands in the names of all its members. Such texts have ten to thirty.
constexpr qint64 kCharactersPerCopy = 48;

/// Bytes of a file that is read again, under another name, for each element that its tags are counted as.
constexpr qint64 kBytesPerElementReadAgain = 8;

/// Pieces of one cut bitfield. A word has 32 bits.
constexpr qint64 kCutPieces = 128;

/// Characters of the position of a bitfield. The positions in the packed word grow by it with every field.
constexpr qsizetype kPositionCharacters = 512;

/// Bitfields of one valuable. A word has 32 bits; views of it may overlap.
constexpr std::size_t kBitFields = 256;

/// Registers, fields and values of one vendor's file, with those that it derives and repeats. The largest chips have
/// some 200,000; each takes about 300 bytes.
constexpr qint64 kImportedParts = 1'000'000;

/// Clusters in clusters of a vendor's file, and what is derived from what is derived. Real ones go about four deep.
constexpr int kImportedDepth = 64;

/// Characters of a text in a vendor's file that are taken over.
constexpr qsizetype kImportedTextCharacters = 64 * 1024;

/// Bytes of all that one run writes or prints, if its user does not say otherwise. The outputs of whole chips come to
/// some 100 MB; a few words of a description that repeats itself can stand for more than a disk holds.
constexpr qint64 kOutputBytes = qint64(4) * 1024 * 1024 * 1024;

/// Bytes of one text that is kept in memory until its file is written. A larger one is made once more, in its turn, and
/// written as it is made.
constexpr qsizetype kTextInMemory = 16 * 1024 * 1024;

/// Bytes of a piece in which a text is written or printed as it is made.
constexpr qsizetype kPieceOfText = 1024 * 1024;

} // namespace veldmap::limits
