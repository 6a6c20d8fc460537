#include "stavio/document/record_key.h"

namespace stavio {

RecordKey KeyFromDataId(KeyKind kind, const EDataID& id)
{
    switch (kind) {
        case KeyKind::Other: return RecordKey::Other(id.other.cmper, static_cast<uint16_t>(id.other.inci));
        case KeyKind::Detail:
            return RecordKey::Detail(id.detail.cmper1, id.detail.cmper2, static_cast<uint16_t>(id.detail.inci));
        case KeyKind::Number: break;
    }
    return RecordKey::Number(id.words[0]);
}

void KeyToDataId(KeyKind kind, const RecordKey& key, EDataID& id)
{
    switch (kind) {
        case KeyKind::Other:
            id.other.cmper = key.group1;
            id.other.inci = static_cast<int16_t>(key.inci);
            return;
        case KeyKind::Detail:
            id.detail.cmper1 = key.group1;
            id.detail.cmper2 = key.group2;
            id.detail.inci = static_cast<int16_t>(key.inci);
            return;
        case KeyKind::Number: break;
    }
    id.words[0] = key.group1;
}

}   // namespace stavio
