#pragma once

#include <QByteArray>

/// What the tool writes to /etc/network/interfaces above the interfaces, up to the empty line.
const QByteArray interfacesHead
    = "# This file describes the network interfaces available on your system\n"
      "# and how to activate them. For more information, see interfaces(5).\n"
      "\n"
      "# The loopback network interface\n"
      "auto lo\n"
      "iface lo inet loopback\n"
      "\n"
      "#Network interfaces\n";
