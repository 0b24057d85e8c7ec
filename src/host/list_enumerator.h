#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "host/com_ptr.h"
#include "host/media_type.h"
#include "host/unknown.h"

namespace korvalin::host {

namespace enumerator_detail {

// How one listed item is handed out through Next.
template <class T>
void HandOut(const ComPtr<T>& item, T** out) {
  item.CopyTo(out);
}
inline void HandOut(const AM_MEDIA_TYPE& item, MediaTypePtr* out) {
  *out = CreateMediaType(item);
}

template <class Item>
struct OutOf;
template <class T>
struct OutOf<ComPtr<T>> {
  using type = T*;
};
template <>
struct OutOf<AM_MEDIA_TYPE> {
  using type = MediaTypePtr;
};

}  // namespace enumerator_detail

// An enumerator (IEnumPins, IEnumFilters, IEnumMediaTypes) over a list taken when it was
// made: later changes to the pins, filters or types do not disturb a walk in progress.
template <class Interface, class Item>
class ListEnumerator : public UnknownBase, public Interface {
 public:
  using Out = typename enumerator_detail::OutOf<Item>::type;

  explicit ListEnumerator(std::vector<Item> items, std::size_t position = 0)
      : items_(std::move(items)), position_(position) {}

  HRESULT NonDelegatingQueryInterface(const IID& iid, void** out) override {
    if (out && iid == Interface::kIid) return GetInterface(static_cast<Interface*>(this), out);
    return UnknownBase::NonDelegatingQueryInterface(iid, out);
  }

  HRESULT Next(uint32_t count, Out* out, uint32_t* fetched) override {
    if (!out) return E_POINTER;
    uint32_t done = 0;
    for (; done < count && position_ < items_.size(); ++done, ++position_) {
      enumerator_detail::HandOut(items_[position_], &out[done]);
    }
    if (fetched) *fetched = done;
    return done == count ? S_OK : S_FALSE;
  }
  HRESULT Skip(uint32_t count) override {
    const std::size_t left = items_.size() - position_;
    position_ += std::min<std::size_t>(count, left);
    return count <= left ? S_OK : S_FALSE;
  }
  HRESULT Reset() override {
    position_ = 0;
    return S_OK;
  }
  HRESULT Clone(Interface** copy) override {
    if (!copy) return E_POINTER;
    auto clone = MakeCom<ListEnumerator>(items_, position_);
    if (!clone) return E_OUTOFMEMORY;
    *copy = clone.Detach();
    return S_OK;
  }

 private:
  std::vector<Item> items_;
  std::size_t position_;
};

// Makes a ListEnumerator and hands it out through *out.
template <class Interface, class Item>
HRESULT MakeEnumerator(std::vector<Item> items, Interface** out) {
  if (!out) return E_POINTER;
  auto enumerator = MakeCom<ListEnumerator<Interface, Item>>(std::move(items));
  *out = enumerator.Detach();
  return *out ? S_OK : E_OUTOFMEMORY;
}

}  // namespace korvalin::host
