#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>

#include "host/guid.h"
#include "host/hresult.h"
#include "host/unknown.h"

namespace korvalin::host {

// Blocks handed across an interface and freed by the receiver.
inline void* CoTaskMemAlloc(std::size_t bytes) { return std::malloc(bytes); }
inline void CoTaskMemFree(void* block) { std::free(block); }

// A counted array of class identifiers; pElems comes from CoTaskMemAlloc.
struct CAUUID {
  uint32_t cElems = 0;
  GUID* pElems = nullptr;
};

// Offered by an object that has property pages: their class identifiers, in tab order.
struct ISpecifyPropertyPages : virtual IUnknown {
  static constexpr IID kIid = HostIid(40);

  virtual HRESULT GetPages(CAUUID* pages) = 0;
};

struct PROPPAGEINFO {
  std::u16string pszTitle;
};

// One page of a property frame, shown for the objects it is given.
struct IPropertyPage : virtual IUnknown {
  static constexpr IID kIid = HostIid(41);

  virtual HRESULT GetPageInfo(PROPPAGEINFO* info) = 0;
  // The objects whose properties the page shows; count 0 lets go of them.
  virtual HRESULT SetObjects(uint32_t count, IUnknown** objects) = 0;
  // S_OK when the page holds changes not yet applied, else S_FALSE.
  virtual HRESULT IsPageDirty() = 0;
  virtual HRESULT Apply() = 0;
};

inline constexpr IID IID_ISpecifyPropertyPages = ISpecifyPropertyPages::kIid;
inline constexpr IID IID_IPropertyPage = IPropertyPage::kIid;

}  // namespace korvalin::host
