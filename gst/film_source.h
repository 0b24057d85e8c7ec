#pragma once

#include <cstdint>
#include <mutex>
#include <string>

#include "host/base_filter.h"
#include "host/filter_interfaces.h"
#include "host/graph_interfaces.h"
#include "host/output_pin.h"

namespace korvalin::gst {

inline constexpr host::CLSID CLSID_FilmSource =
    host::MakeGuid("6B6F7276-0005-4C4E-8000-46494C4D5352");

// What the element knows of the film it is given: the frames' size and rate, the shape of
// their pixels, and where the film comes from.
struct FilmFormat {
  int32_t width = 0;
  int32_t height = 0;
  int32_t rateNumerator = 0;    // frames per second as a fraction; 0: unknown
  int32_t rateDenominator = 1;
  int32_t pixelAspectNumerator = 1;
  int32_t pixelAspectDenominator = 1;

  // 100-ns units per frame, 0 when the rate is unknown.
  int64_t FrameDuration() const;
  bool operator==(const FilmFormat&) const = default;
};

// The host-side stand-in for the player's decoder: a filter without inputs whose one pin
// offers the film's YUY2 frames, first with their picture shape (VIDEOINFOHEADER2) then as
// plain square pixels, as a decoder would. It never streams: the element hands its frames
// to the video filter itself. It answers IFileSourceFilter with the film's file, so the
// filter finds the subtitles beside it, and IMediaPosition with the film's length.
class FilmSource : public host::BaseFilter,
                   public host::IFileSourceFilter,
                   public host::IMediaPosition {
 public:
  FilmSource();
  // The film's format, its file ("" none) and its length in seconds (0: unknown).
  void SetFilm(const FilmFormat& format, std::string fileName, double durationSeconds);

  host::HRESULT NonDelegatingQueryInterface(const host::IID& iid, void** out) override;
  int GetPinCount() override { return 1; }
  host::BasePin* GetPin(int index) override;
  host::HRESULT Load(std::u16string_view fileName, const host::AM_MEDIA_TYPE* type) override;
  host::HRESULT GetCurFile(std::u16string* fileName, host::AM_MEDIA_TYPE* type) override;
  host::HRESULT get_Duration(double* seconds) override;

 private:
  class Pin : public host::BaseOutputPin {
   public:
    explicit Pin(FilmSource* source);
    host::HRESULT CheckMediaType(const host::AM_MEDIA_TYPE& type) override;
    host::HRESULT GetMediaType(int position, host::AM_MEDIA_TYPE* type) override;
    host::HRESULT DecideBufferSize(host::IMemAllocator* allocator,
                                   host::ALLOCATOR_PROPERTIES* request) override;

   private:
    FilmSource* source_;
  };

  FilmFormat Format();

  std::mutex lock_;
  FilmFormat format_;
  std::string fileName_;
  double durationSeconds_ = 0;
  Pin pin_;
};

}  // namespace korvalin::gst
