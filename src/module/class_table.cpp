#include "module/class_table.h"

#include <new>

#include "filter/loader_filter.h"
#include "filter/video_filter.h"
#include "host/class_factory.h"
#include "host/media_guids.h"
#include "ui/page_classes.h"

namespace korvalin {
namespace {

using namespace host;

// Both filters come before the framework's preferred ones.
constexpr uint32_t kFilterMerit = 0x900000;

// The module's objects stand alone: none can be part of an outer object.
template <class Filter>
HRESULT CreateFilter(IUnknown* outer, const IID& iid, void** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  if (outer) return CLASS_E_NOAGGREGATION;
  try {
    const ComPtr<Filter> filter = MakeCom<Filter>();  // with the stored settings
    return filter ? filter->QueryInterface(iid, out) : E_OUTOFMEMORY;
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  }
}

FactoryTemplate::CreateFunction PageCreator(const CLSID& clsid) {
  return [clsid](IUnknown* outer, const IID& iid, void** out) -> HRESULT {
    if (!out) return E_POINTER;
    *out = nullptr;
    if (outer) return CLASS_E_NOAGGREGATION;
    try {
      return CreatePropertyPage(clsid, iid, out);
    } catch (const std::bad_alloc&) {
      return E_OUTOFMEMORY;
    }
  };
}

REGFILTERPINS Pin(std::u16string name, bool output, std::u16string connectsTo, GUID major,
                  GUID minor) {
  REGFILTERPINS pin;
  pin.strName = std::move(name);
  pin.bOutput = output;
  pin.clsConnectsToFilter = GUID_NULL;
  pin.strConnectsToPin = std::move(connectsTo);
  pin.lpMediaType = {{major, minor}};
  return pin;
}

FactoryTemplate Filter(std::u16string name, const CLSID& clsid,
                       FactoryTemplate::CreateFunction create, std::vector<REGFILTERPINS> pins) {
  return {std::move(name), clsid, std::move(create), true, kFilterMerit, std::move(pins)};
}

FactoryTemplate Page(std::u16string name, const CLSID& clsid) {
  return {std::move(name), clsid, PageCreator(clsid), false, MERIT_DO_NOT_USE, {}};
}

std::vector<FactoryTemplate> MakeTable() {
  return {
      Filter(u"Korvalin", CLSID_VideoFilter, CreateFilter<VideoFilter>,
             {Pin(u"Input", false, u"Output", MEDIATYPE_Video, MEDIASUBTYPE_YUY2),
              Pin(u"Output", true, u"Input", MEDIATYPE_Video, GUID_NULL)}),
      Page(u"Korvalin Picture", CLSID_PicturePage),
      Page(u"Korvalin Subtitle", CLSID_SubtitlePage),
      Page(u"Korvalin OSD", CLSID_OsdPage),
      Page(u"Korvalin About", CLSID_AboutPage),
      Filter(u"KorvalinForce", CLSID_LoaderFilter, CreateFilter<LoaderFilter>,
             {Pin(u"Input", false, u"", GUID_NULL, GUID_NULL),
              Pin(u"Output", true, u"", GUID_NULL, GUID_NULL)}),
  };
}

}  // namespace

const std::vector<FactoryTemplate>& ModuleClasses() {
  static const std::vector<FactoryTemplate> table = MakeTable();
  return table;
}

void RegisterModuleClassesInProcess() {
  for (const FactoryTemplate& entry : ModuleClasses()) FilterRegistry::Process().Register(entry);
}

}  // namespace korvalin
