#include "gst/film_source.h"

#include <cstdlib>
#include <cstring>
#include <numeric>

#include "filter/video_format_conversion.h"
#include "filter/yuy2_media_type.h"
#include "host/format_blocks.h"
#include "host/media_guids.h"
#include "host/media_type.h"
#include "host/mem_allocator.h"
#include "host/wide_text.h"

namespace korvalin::gst {

using namespace host;

namespace {

// The YUY2 type in a VIDEOINFOHEADER2 whose picture aspect is the film's display shape.
AM_MEDIA_TYPE ShapedType(const FilmFormat& f) {
  AM_MEDIA_TYPE shaped = Yuy2VideoType(f.width, f.height, f.FrameDuration());
  ConvertVideoInfoToVideoInfo2(&shaped);
  VIDEOINFOHEADER2 vih2;
  ReadFormatBlock(shaped, &vih2);
  int64_t x = int64_t{f.width} * f.pixelAspectNumerator;
  int64_t y = int64_t{f.height} * f.pixelAspectDenominator;
  const int64_t divisor = std::gcd(x, y);
  if (divisor > 0) x /= divisor, y /= divisor;
  while (x > UINT32_MAX || y > UINT32_MAX) x >>= 1, y >>= 1;
  vih2.dwPictAspectRatioX = static_cast<uint32_t>(x);
  vih2.dwPictAspectRatioY = static_cast<uint32_t>(y);
  std::memcpy(shaped.format.data(), &vih2, FormatBlockSize<VIDEOINFOHEADER2>);
  return shaped;
}

}  // namespace

int64_t FilmFormat::FrameDuration() const {
  if (rateNumerator <= 0 || rateDenominator <= 0) return 0;
  return int64_t{10000000} * rateDenominator / rateNumerator;
}

FilmSource::Pin::Pin(FilmSource* source) : BaseOutputPin(source, u"Out"), source_(source) {}

HRESULT FilmSource::Pin::CheckMediaType(const AM_MEDIA_TYPE& type) {
  const FilmFormat film = source_->Format();
  const VideoFormat format = ToVideoFormat(type);
  const bool same = type.subtype == MEDIASUBTYPE_YUY2 && format.biBitCount == 16 &&
                    format.biWidth == film.width && std::abs(format.biHeight) == film.height;
  return same ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
}

HRESULT FilmSource::Pin::GetMediaType(int position, AM_MEDIA_TYPE* type) {
  if (position < 0) return E_INVALIDARG;
  if (position > 1) return VFW_S_NO_MORE_ITEMS;
  const FilmFormat film = source_->Format();
  *type = position == 0 ? ShapedType(film)
                        : Yuy2VideoType(film.width, film.height, film.FrameDuration());
  return S_OK;
}

HRESULT FilmSource::Pin::DecideBufferSize(IMemAllocator* allocator,
                                          ALLOCATOR_PROPERTIES* request) {
  const FilmFormat film = source_->Format();
  request->cBuffers = 1;
  request->cbBuffer = film.width * 2 * film.height;
  return SetBuffersAtLeast(allocator, *request);
}

FilmSource::FilmSource() : BaseFilter(CLSID_FilmSource), pin_(this) {}

void FilmSource::SetFilm(const FilmFormat& format, std::string fileName, double durationSeconds) {
  std::lock_guard lock(lock_);
  format_ = format;
  fileName_ = std::move(fileName);
  durationSeconds_ = durationSeconds;
}

FilmFormat FilmSource::Format() {
  std::lock_guard lock(lock_);
  return format_;
}

HRESULT FilmSource::NonDelegatingQueryInterface(const IID& iid, void** out) {
  if (out && iid == IID_IMediaPosition)
    return GetInterface(static_cast<IMediaPosition*>(this), out);
  if (out && iid == IID_IFileSourceFilter)
    return GetInterface(static_cast<IFileSourceFilter*>(this), out);
  return BaseFilter::NonDelegatingQueryInterface(iid, out);
}

BasePin* FilmSource::GetPin(int index) {
  return index == 0 ? &pin_ : nullptr;
}

HRESULT FilmSource::Load(std::u16string_view, const AM_MEDIA_TYPE*) {
  return E_NOTIMPL;  // the player opens the film, not us
}

HRESULT FilmSource::GetCurFile(std::u16string* fileName, AM_MEDIA_TYPE* type) {
  if (fileName == nullptr) return E_POINTER;
  std::lock_guard lock(lock_);
  *fileName = Widen(fileName_);
  if (type != nullptr) *type = AM_MEDIA_TYPE{};
  return S_OK;
}

HRESULT FilmSource::get_Duration(double* seconds) {
  if (seconds == nullptr) return E_POINTER;
  std::lock_guard lock(lock_);
  if (durationSeconds_ <= 0) return E_NOTIMPL;
  *seconds = durationSeconds_;
  return S_OK;
}

}  // namespace korvalin::gst
