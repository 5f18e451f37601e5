// The answers to commands as bytes on a port: cut into lines and freed of echo and of what comes
// unasked, whatever the pieces they come in.

#include "atchannel.h"
#include "fuzzinput.h"
#include "scripteddevice.h"

#include <chrono>

namespace {

// Never reached: the device goes away when nothing more comes.
constexpr std::chrono::seconds kLimit{10};

QList<QByteArray> pieces(const QByteArray &bytes, int size)
{
    QList<QByteArray> all;
    for (int at = 0; at < bytes.size(); at += size)
        all += bytes.mid(at, size);
    return all;
}

AtReply answer(const QByteArray &command, const QList<QByteArray> &bytes)
{
    ScriptedDevice device;
    device.goesAway = true;
    device.answers[command + '\r'] = bytes;
    AtChannel channel(&device, QStringLiteral("port"));
    return channel.send(command, kLimit);
}

void requireWhole(const AtReply &reply)
{
    for (const auto &lines : {reply.lines, reply.unsolicited}) {
        for (const QByteArray &line : lines) {
            require(!line.isEmpty() && line.size() <= AtLines::kMaxLine && line == line.trimmed()
                    && !line.contains('\0') && !line.contains('\r') && !line.contains('\n'),
                "a line is one line");
        }
    }
    require(reply.errorCode >= -1, "an error has a number or none");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    const int pieceSize = 1 + input.choice(200);
    const QByteArray command = input.line();
    const QByteArray text = input.line();
    const QByteArray bytes = input.rest();

    const AtReply whole = answer(command, {bytes});
    const AtReply inPieces = answer(command, pieces(bytes, pieceSize));
    requireWhole(whole);
    requireWhole(inPieces);
    require(whole.status == inPieces.status && whole.errorCode == inPieces.errorCode
            && whole.errorText == inPieces.errorText && whole.lines == inPieces.lines,
        "an answer does not depend on how it came");

    // One after the other on one port, one of them with a text behind the modem's prompt.
    ScriptedDevice device;
    device.goesAway = true;
    device.pending = pieces(bytes.left(pieceSize), 1);
    device.answers[command + '\r'] = pieces(bytes, pieceSize);
    device.answers[text + '\x1a'] = {bytes};
    AtChannel channel(&device, QStringLiteral("port"));
    requireWhole(channel.waitUnsolicited(kLimit));
    requireWhole(channel.sendText(command, text, kLimit));
    requireWhole(channel.send(command, kLimit));
    return 0;
}
