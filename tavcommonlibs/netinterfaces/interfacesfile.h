#pragma once

#include "interfacesettings.h"

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>

class QIODevice;

/// The text of the interfaces file (interfaces(5)), as far as this program reads and writes it.
namespace interfacesfile {

/// What the text in an open device says of the `candidates`, by name. A search for words in lines,
/// not a grammar: comments count like any other line, and an "iface" line is that of the first
/// candidate whose name it holds. An interface on DHCP is filed under the literal word "iface",
/// never under its name.
QHash<QString, InterfaceSettings> read(QIODevice &device, const QStringList &candidates);

/// A whole file: the loopback interface and these, in the map's order. A name that is not plain is
/// left out. A line break in a value becomes a space, and backslashes at its end go: the next line
/// is none of it.
QByteArray text(const QHash<QString, InterfaceSettings> &settings);

/// Whether a name may go into a file that root obeys, and on root's command line: one word without
/// quotes or escapes, no option and no path.
bool isPlainName(const QString &name);

} // namespace interfacesfile
