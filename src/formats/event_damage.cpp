#include "formats/event_damage.h"

namespace quoril {

using namespace Qt::StringLiterals;

void EventDamage::add(qint64 offset, quint64 recordCount)
{
    records += recordCount;
    if (!any() || offset < firstOffset)
        firstOffset = offset;
}

QString EventDamage::text() const
{
    const auto counted = [](quint64 count, QStringView one) {
        return QString::number(count) + u' ' + one.toString() + (count == 1 ? u""_s : u"s"_s);
    };
    QString text = counted(records, u"record") + u" could not be decoded"_s;
    if (chunks > 0)
        text
            += u", "_s + counted(chunks, u"chunk") + (chunks == 1 ? u" has"_s : u" have"_s) + u" no header"_s;
    return any() ? text + u", the first damage is at 0x"_s + QString::number(firstOffset, 16) : text;
}

} // namespace quoril
