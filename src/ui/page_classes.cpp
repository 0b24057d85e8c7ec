#include "ui/page_classes.h"

#include "host/filter_registry.h"
#include "ui/placeholder_page.h"

namespace korvalin {

using namespace host;

namespace {

struct PageClass {
  const CLSID* clsid;
  const char16_t* title;
};

constexpr PageClass kPages[] = {
    {&CLSID_PicturePage, u"Picture"},
    {&CLSID_SubtitlePage, u"Subtitles"},
    {&CLSID_OsdPage, u"OSD"},
    {&CLSID_AboutPage, u"Help/About"},
};

}  // namespace

HRESULT CreatePropertyPage(const CLSID& clsid, const IID& iid, void** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  for (const PageClass& page : kPages) {
    if (*page.clsid != clsid) continue;
    const ComPtr<PlaceholderPage> made = MakeCom<PlaceholderPage>(page.title);
    return made ? made->QueryInterface(iid, out) : E_OUTOFMEMORY;
  }
  return REGDB_E_CLASSNOTREG;
}

}  // namespace korvalin
