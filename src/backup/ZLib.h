// The compressed backup file (".kmz"): one zlib stream of the whole store
// file, then a trailer read from the end of the file:
//
//   source path (code page 1252, no terminator) | its length n (1 byte, 1..255)
//   | the format mark 3 (1 byte) | the original size (4 bytes, low byte first)
//
// The mark is all the versioning there is; the zlib stream's Adler-32 is the
// only checksum. Every file written here goes to a private temporary file in
// the destination's folder, is synced and only then renamed into place, so a
// file of the same name is replaced whole or not at all.
#pragma once

#include <functional>

#include <QByteArray>
#include <QDateTime>
#include <QString>

namespace ZLib {

constexpr char FormatMark = 3;
constexpr int MaxPathBytes = 255;

// Called between slices of long work so that the window stays drawn.
using Progress = std::function<void()>;

// value in count bytes, low byte first; a negative value in two's complement.
QByteArray LittleEndianBytes(qint64 value, int count);
// The inverse for at most 4 bytes; five or more give 0.
qint32 BytesToLong(const QByteArray &bytes);

// Replaces data by its zlib stream at the default level (the same bytes as
// zlib's compress); the result is zlib's status.
int CompressBytes(QByteArray &data, const Progress &progress = {});
// Replaces data by its expansion; originalSize sizes the output. The result
// is zlib's status: Z_OK only for a complete, sound stream of exactly
// originalSize bytes.
int ExpandBytes(QByteArray &data, qint64 originalSize, const Progress &progress = {});

// The trailer for a source of size bytes; empty when the path takes more
// than 255 bytes in the code page (or none).
QByteArray Trailer(const QString &sourcePath, quint32 size);

// What a backup file holds, read and checked in memory.
struct Backup {
    QString sourcePath; // the store's full path when it was backed up
    quint32 size = 0;   // the store's size then
    QByteArray store;   // the expanded store file
};
// Reads and expands a backup file. 0, or the message row why not: 133 for an
// empty file, 131 for no format mark, a damaged or short stream, a size that
// differs from the trailer's, or content that is no store.
int ReadBackup(const QString &path, Backup &backup, const Progress &progress = {});

// Compresses the store at source into destination. The number of bytes
// written, or 0 after the message why not (133 empty, 130 last byte is 3,
// 137 path too long or the file could not be written).
qint64 CompressFile(const QString &source, const QString &destination, const Progress &progress = {});

// Writes data to path through a synced temporary file in the same folder and
// a rename; the file is private (0600). False, and nothing changed at path,
// on failure.
bool WriteFileWhole(const QString &path, const QByteArray &data);

// "yymmddHHnnss" of a moment in local time.
QString TimeStamp(const QDateTime &when);
// The backup's name for a store: its file name up to the first ".", the stamp, ".kmz".
QString BackupFileName(const QString &storePath, const QDateTime &when);

} // namespace ZLib
