// SPDX-License-Identifier: MIT

#include "Base/Registry/zeRegistryImpl.h"

const wchar_t* const zeRegistryImpl::s_hiveNames[NumHives] = {
    L"HKEY_CLASSES_ROOT",  L"HKEY_CURRENT_CONFIG", L"HKEY_CURRENT_USER",
    L"HKEY_LOCAL_MACHINE", L"HKEY_USERS",          L"HKEY_PERFORMANCE_DATA",
};

bool zeRegistryImpl::checkHiveName(const zeString::IString& name, Hive& hive) {
    for (int i = 0; i < NumHives; ++i) {
        if (name == s_hiveNames[i]) {
            hive = static_cast<Hive>(i);
            return true;
        }
    }
    return false;
}
