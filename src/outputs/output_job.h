#pragma once

#include "findings/finding.h"
#include "text/text_sink.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

namespace veldmap {

/// One file of an output, ready to be written.
struct OutputText {
    QString path;
    QByteArray bytes;  ///< the whole file
    QStringList trace; ///< what is traced when it is written
};

/// What a job makes. Of several files one is written only when those before it could be.
struct JobTexts {
    std::vector<OutputText> files;
    QList<Finding> findings; ///< what the text of the files is found to be lacking
    QString failure;         ///< why there is no text
    bool isMissing = false;  ///< there is none, since the file to be copied is not there
    bool isTooLarge = false; ///< there is none here, since it is large: the job has to give it in pieces
};

/// Takes nothing: a text that comes to it is too large for the memory.
struct NoSink final : TextSink {
    bool take(QByteArrayView) override { return false; }
};

/// What a job makes of such a text.
inline JobTexts tooLarge()
{
    JobTexts texts;
    texts.isTooLarge = true;
    return texts;
}

/// One step of an output: a file, or the files of one description, and how their text is made.
struct OutputJob {
    QString path;            ///< of the first file
    QStringList further;     ///< paths of the files behind it
    QString name;            ///< of the file or page in words that name several
    QString refusal;         ///< why it is not written, empty when it is
    QString directory;       ///< made below the directory of the output, if it is named
    bool maySkip = false;    ///< the files are left alone when they are newer than what they are made from
    QDateTime described;     ///< the time of that; invalid if it is not known, which is no reason to write
    QString copied;          ///< the file that is copied, if one is
    QString outside;         ///< where the file lies, if that is not below the directory of the output
    bool isPage = false;     ///< the first page that can't be written ends the pages
    bool waits = false;      ///< made in its turn only, since it reads files
    bool usesBuffer = false; ///< the text is made in the memory of an earlier one
    bool onlyFinds = false;  ///< it writes nothing: another job has its file

    /// Makes the texts, on any thread and beside other jobs. \a buffer is empty but where the job uses one.
    std::function<JobTexts(QByteArray buffer)> make;
    /// Gives the text of the only file in pieces. None where make() always gives it.
    TextSource pieces = {};
};

using OutputJobs = std::vector<OutputJob>;

} // namespace veldmap
