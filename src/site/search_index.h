#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

namespace veldmap {

class SitePlan;

/// What the search of a site reads, as scripts, since from the disk a page can load nothing else. Each calls
/// veldmapIndex with its kind, its number and a function that has the text in a comment: so a browser has it in memory
/// once, as the source of the script, and reads it at the speed of the disk.
///
/// Registers are listed once for each type, a line each; the lines of all types are numbered through, in the order of
/// SitePlan::types(). So an index grows with the description and not with its instances.
///
///     main     what there is of the other files, as JSON; then a line for each instance, type with a page and constant
///     names    the names of a run of types: registers with their places and the names of their fields
///     texts    the descriptions of a run of types, by the same lines
///     words    a run of words that stand in descriptions and options, each with the lines where it does
class SearchIndex {
public:
    /// \a plan must outlive the index. Any number of threads may ask it.
    explicit SearchIndex(const SitePlan &plan);

    qsizetype namesPieces() const { return static_cast<qsizetype>(m_names.size()); }
    qsizetype textsPieces() const { return static_cast<qsizetype>(m_texts.size()); }
    qsizetype wordsPieces() const; ///< beside the list of them

    QByteArray mainScript() const;
    QByteArray namesScript(qsizetype piece) const;

    /// The descriptions of all types and the words in them.
    struct Descriptions {
        std::vector<QByteArray> texts;
        std::vector<QByteArray> words; ///< a list of the others by their first words, then wordsPieces()
    };
    Descriptions descriptions() const;

private:
    /// Some types, one behind the other.
    struct Piece {
        std::size_t firstType;
        std::size_t endType;
        qint64 firstLine;
    };
    std::vector<Piece> piecesOf(qint64 lines) const;

    const SitePlan &m_plan;
    std::vector<qint64> m_firstLines; ///< of each type, and behind the last
    std::vector<Piece> m_names;
    std::vector<Piece> m_texts;
};

} // namespace veldmap
