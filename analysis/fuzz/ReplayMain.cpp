// Replays a fuzz target's committed regression inputs without libFuzzer, so
// CTest (and its sanitizer build) runs every input that once crashed.
// Usage: replay FILE_OR_FOLDER...

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

int replay(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(path));
        return 1;
    }
    const QByteArray bytes = file.readAll();
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                           std::size_t(bytes.size()));
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    int failures = 0;
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        const QString arg = QFile::decodeName(argv[i]);
        if (QFileInfo(arg).isDir()) {
            QDirIterator it(arg, QDir::Files);
            while (it.hasNext()) {
                failures += replay(it.next());
                ++count;
            }
        } else {
            failures += replay(arg);
            ++count;
        }
    }
    std::printf("replayed %d inputs\n", count);
    return failures == 0 ? 0 : 1;
}
