#include "smsassembler.h"

#include "gsmcodec.h"

#include <QMap>

#include <algorithm>
#include <cstdlib>

namespace {

constexpr qint64 kTogether = 3600; // seconds

struct Group
{
    SmsPdu first;
    QMap<int, SmsPdu> parts; // by number; 1 alone when the message has no parts
    QList<int> indexes;
};

bool isNear(const QDateTime &one, const QDateTime &other)
{
    return !one.isValid() || !other.isValid() || std::abs(one.secsTo(other)) <= kTogether;
}

bool isSameContent(const SmsPdu &one, const SmsPdu &other)
{
    return one.text == other.text && one.data == other.data;
}

// Whether the part can be one of the group's.
bool fits(const Group &group, const SmsPdu &pdu)
{
    if (!group.first.part || group.first.address != pdu.address)
        return false;
    const SmsPart &known = *group.first.part;
    const SmsPart &part = *pdu.part;
    if (known.reference != part.reference || known.wideReference != part.wideReference
        || known.total != part.total || !isNear(group.first.time, pdu.time))
        return false;
    const auto same = group.parts.constFind(part.number);
    return same == group.parts.constEnd() || isSameContent(*same, pdu);
}

QString joined(const Group &group)
{
    QString text;
    QByteArray ucs2; // joined before it is decoded: a part may end within a pair of surrogates
    const auto flush = [&text, &ucs2] {
        text += gsmcodec::fromUcs2(ucs2);
        ucs2.clear();
    };
    int expected = 1;
    for (auto part = group.parts.cbegin(); part != group.parts.cend(); ++part) {
        if (part.key() != expected) {
            flush();
            text += QChar(0x2026);
        }
        expected = part.key() + 1;
        if (part->coding.alphabet == SmsCoding::Alphabet::Ucs2) {
            ucs2 += part->data;
        } else {
            flush();
            text += part->text;
        }
    }
    flush();
    if (group.first.part && expected <= group.first.part->total)
        text += QChar(0x2026);
    return text;
}

bool isEarlier(const QDateTime &one, const QDateTime &other)
{
    if (one.isValid() != other.isValid())
        return one.isValid();
    return one.isValid() && one < other;
}

} // namespace

QList<SmsMessage> assembleMessages(const QList<StoredSms> &stored)
{
    QList<StoredSms> inOrder = stored;
    std::stable_sort(inOrder.begin(), inOrder.end(),
        [](const StoredSms &a, const StoredSms &b) { return isEarlier(a.pdu.time, b.pdu.time); });
    QList<Group> groups;
    for (const StoredSms &sms : qAsConst(inOrder)) {
        if (sms.pdu.kind != SmsPdu::Kind::Deliver)
            continue;
        // The latest that it fits: the reference may be an old one used again.
        auto group = groups.rend();
        if (sms.pdu.part)
            group = std::find_if(groups.rbegin(), groups.rend(),
                [&sms](const Group &known) { return fits(known, sms.pdu); });
        if (group == groups.rend()) {
            groups << Group{sms.pdu, {}, {}};
            group = groups.rbegin();
        }
        group->parts.insert(sms.pdu.part ? sms.pdu.part->number : 1, sms.pdu);
        group->indexes << sms.index;
    }
    QList<SmsMessage> messages;
    for (const Group &group : qAsConst(groups)) {
        const bool complete = !group.first.part || group.parts.size() == group.first.part->total;
        messages << SmsMessage{
            group.first.time, group.first.address, joined(group), group.indexes, complete};
    }
    return messages;
}
