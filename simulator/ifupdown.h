#pragma once

#include <QString>

/// Debian's ifupdown and its DHCP client, shown in the terminal's mount namespace where they are
/// when they are installed, with the start script that `service networking` runs. They come from
/// the machine, or from packages that are only unpacked (scripts/setup.sh): installed, ifupdown
/// would make itself the keeper of the machine's own network.
class Ifupdown
{
public:
    Ifupdown();

    /// After PrivateFiles::setUp(). False, with errorText(), when there is no ifupdown to be had or
    /// it cannot be shown.
    bool putInPlace();
    QString errorText() const { return m_errorText; }

    /// Path of a program that is unpacked beside them or installed, or empty.
    QString find(const QString &name) const;

private:
    bool layOver(const QString &directory);

    const QString m_unpacked; ///< directory that holds sbin, etc, ...; need not exist
    QString m_errorText;
};
