// Transform fed directly with samples whose answers a real sample never gives.
#include <gtest/gtest.h>

#include "filter_harness.h"

namespace korvalin::testing {
namespace {

// A sample that passes everything to a real one except the answers a test sets.
class ScriptedSample : public UnknownBase, public IMediaSample {
 public:
  explicit ScriptedSample(IMediaSample* inner) : inner_(inner) {}
  HRESULT NonDelegatingQueryInterface(const IID& iid, void** out) override {
    if (out && iid == IID_IMediaSample) return GetInterface(static_cast<IMediaSample*>(this), out);
    return UnknownBase::NonDelegatingQueryInterface(iid, out);
  }
  HRESULT GetPointer(uint8_t** buffer) override { return inner_->GetPointer(buffer); }
  int32_t GetSize() override { return inner_->GetSize(); }
  HRESULT GetTime(REFERENCE_TIME* start, REFERENCE_TIME* end) override {
    if (timeAnswer == S_OK) return inner_->GetTime(start, end);
    *start = 0;
    *end = 1;
    return timeAnswer;
  }
  HRESULT SetTime(const REFERENCE_TIME* start, const REFERENCE_TIME* end) override {
    return inner_->SetTime(start, end);
  }
  HRESULT IsSyncPoint() override { return syncAnswer; }
  HRESULT SetSyncPoint(bool value) override { return inner_->SetSyncPoint(value); }
  HRESULT IsPreroll() override { return prerollAnswer; }
  HRESULT SetPreroll(bool value) override { return inner_->SetPreroll(value); }
  int32_t GetActualDataLength() override { return inner_->GetActualDataLength(); }
  HRESULT SetActualDataLength(int32_t length) override {
    return inner_->SetActualDataLength(length);
  }
  HRESULT GetMediaType(MediaTypePtr* type) override { return inner_->GetMediaType(type); }
  HRESULT SetMediaType(const AM_MEDIA_TYPE* type) override { return inner_->SetMediaType(type); }
  HRESULT IsDiscontinuity() override { return discontinuityAnswer; }
  HRESULT SetDiscontinuity(bool value) override { return inner_->SetDiscontinuity(value); }
  HRESULT GetMediaTime(int64_t* start, int64_t* end) override {
    return inner_->GetMediaTime(start, end);
  }
  HRESULT SetMediaTime(const int64_t* start, const int64_t* end) override {
    return inner_->SetMediaTime(start, end);
  }

  HRESULT timeAnswer = S_OK;
  HRESULT syncAnswer = S_OK;
  HRESULT prerollAnswer = S_FALSE;
  HRESULT discontinuityAnswer = S_FALSE;

 private:
  ComPtr<IMediaSample> inner_;
};

class SampleAnswersTest : public ::testing::Test {
 protected:
  void SetUp() override {
    Settings settings{Settings::DefaultsOnly{}};
    settings.bFill2 = 0;
    settings.OSD.OSDWorldTime = 1;
    pipeline = std::make_unique<FilterPipeline>(settings, Yuy2Type(320, 240));
    ASSERT_EQ(pipeline->Start(), S_OK);
    ASSERT_EQ(pipeline->source->Pin()->Allocator()->GetBuffer(in.ReleaseAndGetAddressOf(), nullptr,
                                                              nullptr, 0),
              S_OK);
    ASSERT_EQ(pipeline->filter->OutputPin()->Allocator()->GetBuffer(out.ReleaseAndGetAddressOf(),
                                                                    nullptr, nullptr, 0),
              S_OK);
    in->SetMediaType(nullptr);
    const REFERENCE_TIME start = 0, stop = kFrameTicks;
    in->SetTime(&start, &stop);
    scripted = MakeCom<ScriptedSample>(in.Get());
  }
  void TearDown() override {
    scripted.Reset();
    in.Reset();
    out.Reset();
    pipeline.reset();
  }
  std::unique_ptr<FilterPipeline> pipeline;
  ComPtr<IMediaSample> in, out;
  ComPtr<ScriptedSample> scripted;
};

TEST_F(SampleAnswersTest, FlagAnswersOtherThanOkOrFalseDropTheFrame) {
  const struct {
    HRESULT sync, preroll, discontinuity, result;
  } cases[] = {
      {S_OK, S_FALSE, S_FALSE, S_OK},
      {E_FAIL, S_FALSE, S_FALSE, S_FALSE},
      {S_OK, VFW_S_NO_STOP_TIME, S_FALSE, S_FALSE},
      {S_OK, S_FALSE, E_NOTIMPL, S_FALSE},
      {S_FALSE, S_FALSE, S_OK, S_OK},
  };
  for (const auto& c : cases) {
    scripted->syncAnswer = c.sync;
    scripted->prerollAnswer = c.preroll;
    scripted->discontinuityAnswer = c.discontinuity;
    EXPECT_EQ(pipeline->filter->Transform(scripted.Get(), out.Get()), c.result);
    if (c.result == S_OK) {
      EXPECT_EQ(out->IsSyncPoint(), c.sync);
      EXPECT_EQ(out->IsDiscontinuity(), c.discontinuity);
    }
  }
}

TEST_F(SampleAnswersTest, StartWithoutStopCountsAsUntimed) {
  scripted->timeAnswer = VFW_S_NO_STOP_TIME;
  ASSERT_EQ(pipeline->filter->Transform(scripted.Get(), out.Get()), S_OK);
  REFERENCE_TIME start, stop;
  EXPECT_EQ(out->GetTime(&start, &stop), VFW_E_SAMPLE_TIME_NOT_SET);
  EXPECT_EQ(pipeline->filter->lastClockState, -1);
}

TEST_F(SampleAnswersTest, OutputTooSmallOrUnknownIsDeliveredUnwritten) {
  AM_MEDIA_TYPE& output = pipeline->filter->OutputPin()->CurrentMediaType();
  const AM_MEDIA_TYPE agreed = output;
  output.subtype = MEDIASUBTYPE_RGB24;
  EXPECT_EQ(pipeline->filter->Transform(in.Get(), out.Get()), S_OK);
  EXPECT_EQ(out->GetActualDataLength(), 0);

  output = Yuy2Type(320, 2400);  // ten times the buffer it has
  EXPECT_EQ(pipeline->filter->Transform(in.Get(), out.Get()), S_OK);
  EXPECT_EQ(out->GetActualDataLength(), 0);

  output = agreed;
  EXPECT_EQ(pipeline->filter->Transform(in.Get(), out.Get()), S_OK);
  EXPECT_EQ(out->GetActualDataLength(), 320 * 240 * 2);
}

}  // namespace
}  // namespace korvalin::testing
