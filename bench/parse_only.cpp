// Parses every description below a directory with QDomDocument, and does nothing else.

#include <QDirIterator>
#include <QDomDocument>
#include <QFile>

#include <cstdio>

int main(int argc, char **argv)
{
    int documents = 0;
    QDirIterator files(QString::fromLocal8Bit(argc > 1 ? argv[1] : "."), {QStringLiteral("*.xml")}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        QDomDocument document;
        if (!file.open(QIODevice::ReadOnly) || !document.setContent(&file))
            return 1;
        ++documents;
    }
    std::printf("%d documents\n", documents);
    return documents > 0 ? 0 : 1;
}
