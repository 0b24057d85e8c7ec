#include "ui/placeholder_page.h"

namespace korvalin {

using namespace host;

HRESULT PlaceholderPage::NonDelegatingQueryInterface(const IID& iid, void** out) {
  if (!out) return E_POINTER;
  if (iid == IID_IPropertyPage) return GetInterface(static_cast<IPropertyPage*>(this), out);
  return UnknownBase::NonDelegatingQueryInterface(iid, out);
}

HRESULT PlaceholderPage::GetPageInfo(PROPPAGEINFO* info) {
  if (!info) return E_POINTER;
  info->pszTitle = title_;
  return S_OK;
}

HRESULT PlaceholderPage::SetObjects(uint32_t count, IUnknown** objects) {
  if (count > 0 && !objects) return E_POINTER;
  objects_.assign(objects, objects + count);
  return S_OK;
}

}  // namespace korvalin
