#pragma once

#include "operatordata.h"

#include <QHash>
#include <QString>

#include <optional>

/**
 * What is known of the mobile operators of the world, by the codes of their networks. It is read
 * from files of the schema of Debian's mobile-broadband-provider-info (serviceproviders.2.dtd).
 * Where several providers share a network, the primary one counts, or else the first; of its
 * access points the first one for the Internet. Any thread may look up in a table that is no
 * longer changed.
 */
class OperatorTable
{
public:
    /** Where the package has its file. */
    static const QString SYSTEM_FILE;

    /**
     * Reads a file and lays it over what was read before: what it tells of a network replaces
     * that, what it leaves out (access point, balance code, way to the own number) stays. What is
     * wrong in a file is logged as a warning, the rest of it counts. False when it could not be
     * read to its end.
     */
    bool read(const QString &path);

    /** Mobile country and network codes as numbers: 250, 1 is network "25001". */
    std::optional<OperatorData> find(int mcc, int mnc) const;
    int size() const { return m_operators.size(); }

private:
    QHash<int, OperatorData> m_operators;
};
