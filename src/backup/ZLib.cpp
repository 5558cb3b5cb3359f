#include "backup/ZLib.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <unistd.h>
#include <zlib.h>

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include "platform/CodePage1252.h"
#include "platform/Engine.h"
#include "ui/Dialogs.h"

namespace ZLib {

namespace {

// Long work is cut into slices of this many input bytes, with a call to the
// progress hook after each: small enough for the window to stay drawn.
constexpr qint64 Slice = qint64(4) << 20;

// The output room the file format asks for: len + len * 0.01 + 12, rounded.
qint64 Room(qint64 len) {
    return len + (len + 50) / 100 + 12;
}

bool writeAll(int fd, const char *data, qint64 size) {
    while (size > 0) {
        const ssize_t n = ::write(fd, data, static_cast<size_t>(std::min<qint64>(size, qint64(1) << 30)));
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        data += n;
        size -= n;
    }
    return true;
}

bool readWhole(const QString &path, QByteArray &data) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) return false;
    data = f.readAll();
    return f.error() == QFile::NoError;
}

} // namespace

QByteArray LittleEndianBytes(qint64 value, int count) {
    QByteArray out(count, '\0');
    auto bits = static_cast<quint64>(value);
    for (int i = 0; i < count; ++i, bits >>= 8)
        out[i] = static_cast<char>(bits & 0xff);
    return out;
}

qint32 BytesToLong(const QByteArray &bytes) {
    if (bytes.size() > 4) return 0;
    quint32 value = 0;
    for (qsizetype i = bytes.size() - 1; i >= 0; --i)
        value = (value << 8) | static_cast<uchar>(bytes.at(i));
    return static_cast<qint32>(value);
}

int CompressBytes(QByteArray &data, const Progress &progress) {
    z_stream z{};
    int status = deflateInit(&z, Z_DEFAULT_COMPRESSION);
    if (status != Z_OK) return status;
    QByteArray out(std::max<qint64>(Room(data.size()), static_cast<qint64>(compressBound(static_cast<uLong>(data.size())))),
                   Qt::Uninitialized);
    z.next_out = reinterpret_cast<Bytef *>(out.data());
    z.avail_out = static_cast<uInt>(out.size());
    qint64 done = 0;
    // Fed a slice at a time, deflate gives the same stream as compress: it
    // decides nothing until it has seen enough input ahead of the match.
    do {
        const qint64 take = std::min(Slice, data.size() - done);
        z.next_in = reinterpret_cast<Bytef *>(data.data() + done);
        z.avail_in = static_cast<uInt>(take);
        done += take;
        status = deflate(&z, done == data.size() ? Z_FINISH : Z_NO_FLUSH);
        if (progress) progress();
    } while (status == Z_OK && done < data.size());
    const qint64 written = static_cast<qint64>(z.total_out);
    deflateEnd(&z);
    if (status != Z_STREAM_END) return status == Z_OK ? Z_BUF_ERROR : status;
    out.resize(written);
    data = std::move(out);
    return Z_OK;
}

int ExpandBytes(QByteArray &data, qint64 originalSize, const Progress &progress) {
    z_stream z{};
    int status = inflateInit(&z);
    if (status != Z_OK) return status;
    // One byte more than promised: a stream that runs on past the trailer's
    // size is caught rather than cut.
    QByteArray out(originalSize + 1, Qt::Uninitialized);
    z.next_in = reinterpret_cast<Bytef *>(data.data());
    z.avail_in = static_cast<uInt>(data.size());
    qint64 produced = 0;
    do {
        const qint64 take = std::min(Slice, out.size() - produced);
        z.next_out = reinterpret_cast<Bytef *>(out.data() + produced);
        z.avail_out = static_cast<uInt>(take);
        status = inflate(&z, Z_NO_FLUSH);
        produced = static_cast<qint64>(z.total_out);
        if (progress) progress();
    } while (status == Z_OK && produced < out.size() && z.avail_in > 0);
    inflateEnd(&z);
    if (status == Z_STREAM_END && produced == originalSize && z.avail_in == 0) {
        out.resize(produced);
        data = std::move(out);
        return Z_OK;
    }
    return status == Z_STREAM_END || status == Z_OK ? Z_DATA_ERROR : status;
}

QByteArray Trailer(const QString &sourcePath, quint32 size) {
    const QByteArray path = km::cp1252::toBytes(sourcePath);
    if (path.isEmpty() || path.size() > MaxPathBytes) return {};
    QByteArray t = path;
    t.append(static_cast<char>(path.size()));
    t.append(FormatMark);
    t.append(LittleEndianBytes(size, 4));
    return t;
}

int ReadBackup(const QString &path, Backup &backup, const Progress &progress) {
    QByteArray file;
    if (!readWhole(path, file)) return 131;
    if (file.isEmpty()) return 133;
    const qsizetype L = file.size();
    if (L < 6 || file.at(L - 5) != FormatMark) return 131;
    const int n = static_cast<uchar>(file.at(L - 6));
    if (n == 0 || L < n + 6) return 131;
    backup.sourcePath = km::cp1252::fromBytes(file.mid(L - 6 - n, n));
    backup.size = static_cast<quint32>(BytesToLong(file.right(4)));
    file.truncate(L - (n + 6));
    if (ExpandBytes(file, backup.size, progress) != Z_OK) return 131;
    try {
        km::StoreDb::OpenImage(file);
    } catch (const km::EngineError &) {
        return 131;
    }
    backup.store = std::move(file);
    return 0;
}

qint64 CompressFile(const QString &source, const QString &destination, const Progress &progress) {
    const qint64 size = QFileInfo(source).size();
    if (size == 0) {
        km::ShowMessage(133, km::Buttons::OK, km::Answer::OK, km::Icon::Exclamation);
        return 0;
    }
    QByteArray data;
    if (!readWhole(source, data) || size > qint64(0xffffffffu)) {
        km::ShowMessage(137, km::Buttons::OK, km::Answer::OK, km::Icon::Exclamation);
        return 0;
    }
    if (data.endsWith(FormatMark)) {
        km::ShowMessage(130, km::Buttons::OK, km::Answer::OK, km::Icon::Exclamation);
        return 0;
    }
    const QByteArray trailer = Trailer(source, static_cast<quint32>(data.size()));
    if (trailer.isEmpty() || CompressBytes(data, progress) != Z_OK) {
        km::ShowMessage(137, km::Buttons::OK, km::Answer::OK, km::Icon::Exclamation);
        return 0;
    }
    data.append(trailer);
    if (!WriteFileWhole(destination, data)) {
        km::ShowMessage(137, km::Buttons::OK, km::Answer::OK, km::Icon::Exclamation);
        return 0;
    }
    return data.size();
}

bool WriteFileWhole(const QString &path, const QByteArray &data) {
    const QFileInfo info(path);
    const QByteArray folder = QFile::encodeName(info.absolutePath());
    QByteArray temp;
    int fd = -1;
    for (int i = 0; fd < 0 && i < 100; ++i) {
        temp = QFile::encodeName(info.absoluteFilePath()) + ".part" + QByteArray::number(i);
        fd = ::open(temp.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (fd < 0 && errno != EEXIST) return false;
    }
    if (fd < 0) return false;
    const bool written = writeAll(fd, data.constData(), data.size()) && ::fsync(fd) == 0;
    const bool closed = ::close(fd) == 0;
    if (!written || !closed ||
        ::rename(temp.constData(), QFile::encodeName(info.absoluteFilePath()).constData()) != 0) {
        ::unlink(temp.constData());
        return false;
    }
    // The rename itself lasts only once the folder is synced.
    const int dir = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dir >= 0) {
        ::fsync(dir);
        ::close(dir);
    }
    return true;
}

QString TimeStamp(const QDateTime &when) {
    return when.toLocalTime().toString(QStringLiteral("yyMMddHHmmss"));
}

QString BackupFileName(const QString &storePath, const QDateTime &when) {
    const QString name = QFileInfo(storePath).fileName();
    return name.section(QLatin1Char('.'), 0, 0) + TimeStamp(when) + QStringLiteral(".kmz");
}

} // namespace ZLib
