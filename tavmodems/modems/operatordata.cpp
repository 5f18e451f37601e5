#include "operatordata.h"

#include <tuple>

bool OperatorData::operator==(const OperatorData &other) const
{
    const auto fields = [](const OperatorData &data) {
        return std::tie(data.m_name, data.m_userName, data.m_password, data.m_modemInitLine,
            data.m_balancePhone, data.m_selfNumberPhone, data.m_selfNumberFromSms);
    };
    return fields(*this) == fields(other);
}
