#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "host/com_ptr.h"
#include "host/media_guids.h"
#include "host/mem_allocator.h"

namespace korvalin::host {
namespace {

ComPtr<MemAllocator> CommittedPool(int32_t buffers, int32_t size = 64) {
  auto allocator = MakeCom<MemAllocator>();
  ALLOCATOR_PROPERTIES request{buffers, size, 16, 8}, actual;
  EXPECT_EQ(allocator->SetProperties(&request, &actual), S_OK);
  EXPECT_EQ(allocator->Commit(), S_OK);
  return allocator;
}

ComPtr<IMediaSample> Take(IMemAllocator* allocator, uint32_t flags = 0) {
  ComPtr<IMediaSample> sample;
  allocator->GetBuffer(sample.ReleaseAndGetAddressOf(), nullptr, nullptr, flags);
  return sample;
}

TEST(MediaSampleTest, TimeRules) {
  const REFERENCE_TIME start = 100, stop = 200;
  struct Case {
    const REFERENCE_TIME* start;
    const REFERENCE_TIME* stop;
    HRESULT result;
    REFERENCE_TIME gotStop;
  };
  const Case cases[] = {
      {&start, &stop, S_OK, 200},
      {&start, nullptr, VFW_S_NO_STOP_TIME, 101},
      {nullptr, &stop, VFW_E_SAMPLE_TIME_NOT_SET, -1},
      {nullptr, nullptr, VFW_E_SAMPLE_TIME_NOT_SET, -1},
  };
  auto pool = CommittedPool(1);
  for (const Case& c : cases) {
    ComPtr<IMediaSample> sample = Take(pool.Get());
    ASSERT_TRUE(sample);
    sample->SetTime(&start, &stop);
    sample->SetTime(c.start, c.stop);
    REFERENCE_TIME gotStart = -1, gotStop = -1;
    EXPECT_EQ(sample->GetTime(&gotStart, &gotStop), c.result);
    EXPECT_EQ(gotStop, c.gotStop);
    if (SUCCEEDED(c.result)) {
      EXPECT_EQ(gotStart, 100);
    }
  }
}

TEST(MediaSampleTest, FlagsMediaTimesTypeAndLength) {
  auto pool = CommittedPool(1);
  ComPtr<IMediaSample> sample = Take(pool.Get());
  ASSERT_TRUE(sample);
  EXPECT_EQ(sample->GetSize(), 64);
  EXPECT_EQ(sample->GetActualDataLength(), 0);
  EXPECT_EQ(sample->SetActualDataLength(65), VFW_E_BUFFER_OVERFLOW);
  EXPECT_EQ(sample->SetActualDataLength(64), S_OK);

  struct Flag {
    HRESULT (IMediaSample::*is)();
    HRESULT (IMediaSample::*set)(bool);
  };
  for (const Flag& flag : {Flag{&IMediaSample::IsSyncPoint, &IMediaSample::SetSyncPoint},
                           Flag{&IMediaSample::IsPreroll, &IMediaSample::SetPreroll},
                           Flag{&IMediaSample::IsDiscontinuity, &IMediaSample::SetDiscontinuity}}) {
    EXPECT_EQ((sample.Get()->*flag.is)(), S_FALSE);
    (sample.Get()->*flag.set)(true);
    EXPECT_EQ((sample.Get()->*flag.is)(), S_OK);
  }

  int64_t start = 5, stop = 6, gotStart = 0, gotStop = 0;
  EXPECT_EQ(sample->GetMediaTime(&gotStart, &gotStop), VFW_E_MEDIA_TIME_NOT_SET);
  EXPECT_EQ(sample->SetMediaTime(&start, nullptr), E_POINTER);
  EXPECT_EQ(sample->SetMediaTime(&start, &stop), S_OK);
  EXPECT_EQ(sample->GetMediaTime(&gotStart, &gotStop), S_OK);
  EXPECT_EQ(gotStop, 6);

  MediaTypePtr attached;
  EXPECT_EQ(sample->GetMediaType(&attached), S_FALSE);
  EXPECT_FALSE(attached);
  AM_MEDIA_TYPE type;
  type.subtype = MEDIASUBTYPE_RGB565;
  sample->SetMediaType(&type);
  ASSERT_EQ(sample->GetMediaType(&attached), S_OK);
  EXPECT_EQ(attached->subtype, MEDIASUBTYPE_RGB565);

  // Back in the pool the sample forgets everything.
  sample.Reset();
  sample = Take(pool.Get());
  EXPECT_EQ(sample->IsSyncPoint(), S_FALSE);
  EXPECT_EQ(sample->GetMediaType(&attached), S_FALSE);
  EXPECT_EQ(sample->GetMediaTime(&gotStart, &gotStop), VFW_E_MEDIA_TIME_NOT_SET);
  EXPECT_EQ(sample->GetActualDataLength(), 0);
}

TEST(MemAllocatorTest, PoolHandsOutAlignedBuffersAndTakesThemBack) {
  auto pool = CommittedPool(2);
  ComPtr<IMediaSample> first = Take(pool.Get()), second = Take(pool.Get());
  ASSERT_TRUE(first && second);
  uint8_t* data = nullptr;
  first->GetPointer(&data);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(data - 8) % 16, 0u);  // prefix before the aligned block
  EXPECT_FALSE(Take(pool.Get(), AM_GBF_NOWAIT));

  ALLOCATOR_PROPERTIES request{1, 1, 1, 0}, actual;
  EXPECT_EQ(pool->SetProperties(&request, &actual), VFW_E_ALREADY_COMMITTED);
  pool->Decommit();
  EXPECT_EQ(pool->SetProperties(&request, &actual), VFW_E_BUFFERS_OUTSTANDING);
  request.cbAlign = 3;
  first.Reset();
  second.Reset();
  EXPECT_EQ(pool->SetProperties(&request, &actual), VFW_E_BADALIGN);

  pool->Commit();
  ComPtr<IMediaSample> again = Take(pool.Get());
  EXPECT_TRUE(again);
}

TEST(MemAllocatorTest, WaitingGetBufferWakesOnReleaseAndFailsOnDecommit) {
  auto pool = CommittedPool(1);
  for (const bool decommit : {false, true}) {
    ComPtr<IMediaSample> held = Take(pool.Get());
    HRESULT waited = E_FAIL;
    std::thread waiter([&] {
      ComPtr<IMediaSample> sample;
      waited = pool->GetBuffer(sample.ReleaseAndGetAddressOf(), nullptr, nullptr, 0);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    if (decommit) pool->Decommit();
    held.Reset();  // without the decommit the waiter gets this one
    waiter.join();
    EXPECT_EQ(waited, decommit ? VFW_E_NOT_COMMITTED : S_OK);
  }
  EXPECT_FALSE(Take(pool.Get()));
}

TEST(MemAllocatorTest, SampleKeepsPoolAlive) {
  ComPtr<IMediaSample> sample = Take(CommittedPool(1).Get());
  ASSERT_TRUE(sample);
  uint8_t* data = nullptr;
  sample->GetPointer(&data);
  data[0] = 1;  // the pool's memory is still there: the sample holds the allocator
  EXPECT_EQ(MakeCom<MemAllocator>()->Commit(), VFW_E_SIZENOTSET);
}

}  // namespace
}  // namespace korvalin::host
