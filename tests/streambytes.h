#ifndef VANTREL_STREAMBYTES_H
#define VANTREL_STREAMBYTES_H

#include <QByteArray>
#include <QDataStream>
#include <QFile>
#include <QIODevice>

#include <algorithm>

namespace VantrelTest {

/** What a socket is to a reader: no position, and no telling how much will come. */
class Pipe : public QIODevice
{
public:
    explicit Pipe(const QByteArray &bytes) : m_bytes(bytes) { open(ReadOnly | Unbuffered); }
    bool isSequential() const override { return true; }
    int numUnread() const { return m_bytes.size(); }
    /** The most that was asked for at once, which a reader has to allocate first. */
    qint64 largestRead() const { return m_largestRead; }

protected:
    qint64 readData(char *data, qint64 size) override
    {
        m_largestRead = qMax(m_largestRead, size);
        const int count = int(qMin<qint64>(size, m_bytes.size()));
        std::copy_n(m_bytes.constData(), count, data);
        m_bytes.remove(0, count);
        return count;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QByteArray m_bytes;
    qint64 m_largestRead = 0;
};

template <class Record>
QByteArray written(const Record &record)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_5_15);
    record.writeObject(stream);
    return bytes;
}

/** Reads @p record from @p bytes; how it went, and how much was left, can be asked for. */
template <class Record>
QDataStream::Status readFrom(const QByteArray &bytes, Record &record, int *unread = nullptr)
{
    QDataStream stream(bytes);
    stream.setVersion(QDataStream::Qt_5_15);
    record.readObject(stream);
    if (unread) {
        *unread = int(stream.device()->bytesAvailable());
    }
    return stream.status();
}

// The encoding, spelled out: big endian.

inline QByteArray number(qint32 value)
{
    const auto bits = quint32(value);
    const char bytes[] = {char(bits >> 24), char(bits >> 16), char(bits >> 8), char(bits)};
    return QByteArray(bytes, 4);
}

inline QByteArray text(const char *ascii)
{
    QByteArray bytes = number(2 * qint32(qstrlen(ascii)));
    for (const char *c = ascii; *c; ++c) {
        bytes.append('\0').append(*c);
    }
    return bytes;
}

inline QByteArray nullText()
{
    return QByteArray(4, '\xff');
}

/** A record as it was written when its format was settled. */
inline QByteArray keptRecord(const char *name)
{
    QFile file(QStringLiteral(VANTREL_TEST_DATA "/%1").arg(QLatin1String(name)));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace VantrelTest

#endif // VANTREL_STREAMBYTES_H
