#pragma once

#include "filter/page_ids.h"
#include "host/guid.h"
#include "host/hresult.h"
#include "host/unknown.h"

namespace korvalin {

// Makes the property page of one of the four page classes and hands out `iid`;
// REGDB_E_CLASSNOTREG for any other class.
host::HRESULT CreatePropertyPage(const host::CLSID& clsid, const host::IID& iid, void** out);

}  // namespace korvalin
