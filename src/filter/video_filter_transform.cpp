// The per-frame path: one input sample becomes one framed, subtitled output sample.
#include <cstdlib>
#include <span>

#include "filter/media_type_checks.h"
#include "filter/picture_geometry.h"
#include "filter/video_filter.h"
#include "filter/video_format_conversion.h"
#include "render/blend_overlay.h"
#include "video/frame_writer.h"

namespace korvalin {

using namespace host;

namespace {

constexpr int64_t kTicksPerMs = 10000;

// Copies one sample flag; false when the input answers neither S_OK nor S_FALSE.
bool CopyFlag(HRESULT answer, HRESULT (IMediaSample::*set)(bool), IMediaSample* out) {
  if (answer != S_OK && answer != S_FALSE) return false;
  (out->*set)(answer == S_OK);
  return true;
}

bool CopyFlags(IMediaSample* in, IMediaSample* out) {
  return CopyFlag(in->IsSyncPoint(), &IMediaSample::SetSyncPoint, out) &&
         CopyFlag(in->IsPreroll(), &IMediaSample::SetPreroll, out) &&
         CopyFlag(in->IsDiscontinuity(), &IMediaSample::SetDiscontinuity, out);
}

std::span<uint8_t> Bytes(IMediaSample* sample) {
  uint8_t* data = nullptr;
  const int32_t size = sample->GetSize();
  if (FAILED(sample->GetPointer(&data)) || data == nullptr || size <= 0) return {};
  return {data, static_cast<std::size_t>(size)};
}

}  // namespace

bool VideoFilter::AdoptInputType(IMediaSample* in, HRESULT* result) {
  MediaTypePtr type;
  VideoInputPin* input = VideoInput();
  if (in->GetMediaType(&type) == S_OK && type && !type->format.empty()) {
    if (korvalin::CheckInputType(*type, settings_.Overlay != 0) != S_OK) {
      *result = S_FALSE;
      return false;
    }
    input->CurrentMediaType() = *type;
    input->topDownPending = 0;
  }
  if (input->topDownPending != 0) {
    // The upstream kept sending in the type it was asked to change: it writes top-down.
    MakeTopDown(&input->CurrentMediaType());
    input->topDownPending = 0;
  }
  return true;
}

void VideoFilter::AdoptOutputType(IMediaSample* out) {
  MediaTypePtr type;
  if (out->GetMediaType(&type) == S_OK && type && !type->format.empty()) {
    OutputPin()->CurrentMediaType() = *type;
    borderRefresh_ = kBorderRefreshFrames;
  }
}

void VideoFilter::UpdateOverlays(IMediaSample* in, IMediaSample* out, const FrameGeometry& g,
                                 int32_t* subtitleState, int32_t* clockState) {
  REFERENCE_TIME start = 0, stop = 0;
  if (in->GetTime(&start, &stop) != S_OK) return;
  out->SetTime(&start, &stop);
  const REFERENCE_TIME length = stop - start;
  if (frameDuration_ <= 0) {
    detectedFrameDuration_ = static_cast<int32_t>(static_cast<uint32_t>(length & 0xFFFFFFFF));
    if (length > 0) track_.ConvertFramesToMs(10000000.0f / static_cast<float>(length));
  }
  const int32_t t1 = static_cast<int32_t>((start + segmentStart_) / kTicksPerMs);
  const int32_t t2 = static_cast<int32_t>((stop + segmentStart_) / kTicksPerMs);
  *subtitleState =
      track_.UpdateForFrame(settings_.SubtitleTime(t1), settings_.SubtitleTime(t2), g.copyWidth);
  clock_.durationMs = durationMs_;
  *clockState = clock_.UpdateClock(t1, t2, g.copyWidth);
  if (OverlayChangeNeedsRefresh(*subtitleState, lastSubtitleState_))
    borderRefresh_ = kBorderRefreshFrames;
  lastSubtitleState_ = *subtitleState;
  if (OverlayChangeNeedsRefresh(*clockState, lastClockState_)) borderRefresh_ = kBorderRefreshFrames;
  lastClockState_ = *clockState;
}

void VideoFilter::DrawPicture(IMediaSample* in, IMediaSample* out, const FrameGeometry& g,
                              int32_t subtitleState, int32_t clockState) {
  PixelFormat pixels;
  if (!OutputPixelFormat(OutputPin()->CurrentMediaType().subtype, &pixels)) return;
  const VideoFormat inFormat = ToVideoFormat(InputPin()->CurrentMediaType());
  const VideoFormat outFormat = ToVideoFormat(OutputPin()->CurrentMediaType());
  const std::span<uint8_t> inBytes = Bytes(in);
  const std::span<uint8_t> outBytes = Bytes(out);
  const int64_t needed = std::llabs(int64_t{outFormat.biWidth} * outFormat.biHeight) *
                         (pixels == PixelFormat::RGB32 ? 4 : 2);
  if (needed > static_cast<int64_t>(outBytes.size())) return;

  const InputFrame inputFrame{inBytes.data(), inBytes.size(), &inFormat};
  const OutputFrame outputFrame{outBytes.data(), outBytes.size(), &outFormat, pixels};
  if (WriteFrame(inputFrame, outputFrame, g, settings_.Flip, borderRefresh_, colorTables_) != 0)
    return;
  out->SetActualDataLength(static_cast<int32_t>(needed));

  const OverlayTarget target{
      .input = {inBytes, &inFormat, (settings_.Flip & kFlipInput) != 0},
      .output = {outBytes, &outFormat, (settings_.Flip & kFlipOutput) != 0},
      .outputSubtype = pixels,
      .drawingWidth = g.copyWidth,
      .leftBorder = g.leftBorder,
      .inputLeft = g.inputLeft,
      .pictureTop = g.pictureTop,
      .borderRefresh = borderRefresh_,
      .rgb32Padding = colorTables_.Rgb32Padding(),
  };
  if (subtitleState >= 0) {
    BlendOverlay(SubtitleImage(), settings_.Sub.style.XPos, settings_.Sub.style.YPos, target);
  }
  if (clockState >= 0) {
    BlendOverlay(clock_.renderer, settings_.OSD.style.XPos, settings_.OSD.style.YPos, target);
  }
}

HRESULT VideoFilter::Transform(IMediaSample* in, IMediaSample* out) {
  if (in == nullptr || out == nullptr) return E_POINTER;
  std::lock_guard lock(frameLock_);
  if (in->IsPreroll() == S_OK) return S_FALSE;
  HRESULT result = S_OK;
  if (!AdoptInputType(in, &result)) return result;
  AdoptOutputType(out);

  const VideoFormat inFormat = ToVideoFormat(InputPin()->CurrentMediaType());
  const VideoFormat outFormat = ToVideoFormat(OutputPin()->CurrentMediaType());
  const FrameGeometry g =
      PictureGeometry(settings_, sourceAspect_, false)
          .ForFrame(inFormat.biWidth, inFormat.biHeight, outFormat.biWidth, outFormat.biHeight);
  if (!g.Drawable()) return S_OK;

  int32_t subtitleState = -1, clockState = -1;
  UpdateOverlays(in, out, g, &subtitleState, &clockState);
  DrawPicture(in, out, g, subtitleState, clockState);

  int64_t mediaStart = 0, mediaEnd = 0;
  if (in->GetMediaTime(&mediaStart, &mediaEnd) == S_OK) out->SetMediaTime(&mediaStart, &mediaEnd);
  if (!CopyFlags(in, out)) return S_FALSE;
  if (settings_.Economic != 0 && borderRefresh_ > 0) --borderRefresh_;
  return S_OK;
}

}  // namespace korvalin
