#pragma once

#include <string>
#include <vector>

#include "host/com_ptr.h"
#include "host/property_page_interfaces.h"
#include "host/unknown.h"

namespace korvalin {

// A property page that has its title and holds the objects it is shown for, but no
// controls yet: it keeps the page table whole until the pages themselves are built.
class PlaceholderPage : public host::UnknownBase, public host::IPropertyPage {
 public:
  explicit PlaceholderPage(std::u16string title) : title_(std::move(title)) {}

  host::HRESULT NonDelegatingQueryInterface(const host::IID& iid, void** out) override;
  host::HRESULT GetPageInfo(host::PROPPAGEINFO* info) override;
  host::HRESULT SetObjects(uint32_t count, host::IUnknown** objects) override;
  host::HRESULT IsPageDirty() override { return host::S_FALSE; }
  host::HRESULT Apply() override { return host::S_OK; }

 private:
  std::u16string title_;
  std::vector<host::ComPtr<host::IUnknown>> objects_;
};

}  // namespace korvalin
