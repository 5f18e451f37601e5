#pragma once

#include <QIODevice>
#include <QList>
#include <QMap>

/**
 * A device of the tests that plays pieces of input: some are there at once, others come after a
 * line was written. Every wait brings the next piece; there is no clock in it.
 */
class ScriptedDevice : public QIODevice
{
public:
    ScriptedDevice() { open(QIODevice::ReadWrite | QIODevice::Unbuffered); }

    QList<QByteArray> pending; ///< comes next
    QMap<QByteArray, QList<QByteArray>>
        answers; ///< pieces that come after these bytes were written
    QList<QByteArray> written;
    bool goesAway = false; ///< closed when nothing more is to come
    bool takesNothing = false; ///< what is written stays unsent

    bool isSequential() const override { return true; }
    qint64 bytesAvailable() const override { return m_here.size(); }
    qint64 bytesToWrite() const override { return takesNothing ? 1 : 0; }

    bool waitForBytesWritten(int) override { return false; }
    bool waitForReadyRead(int) override
    {
        if (!pending.isEmpty()) {
            m_here += pending.takeFirst();
            return true;
        }
        if (goesAway)
            close();
        return false;
    }

protected:
    qint64 readData(char *data, qint64 size) override
    {
        const QByteArray part = m_here.left(static_cast<int>(size));
        m_here.remove(0, part.size());
        std::copy(part.cbegin(), part.cend(), data);
        return part.size();
    }
    qint64 writeData(const char *data, qint64 size) override
    {
        written << QByteArray(data, static_cast<int>(size));
        pending += answers.value(written.last());
        return size;
    }

private:
    QByteArray m_here;
};
