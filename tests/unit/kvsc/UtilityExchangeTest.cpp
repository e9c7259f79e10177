// The client and the utility that collects for it, on one exchange.
#include <type_traits>

#include "kvsc/HttpUtilityVirtual.h"
#include "tests/support/VtableSlots.h"
#include "tests/unit/kvsc/ExchangeTesting.h"

namespace {

using kvsc::HTTP_ERROR_CANCELLED;
using kvsc::HTTP_ERROR_NONE;
using kvsc::HttpUtilityVirtual;
using support::okResponse;
using support::Script;
using support::slotOf;

static_assert(std::has_virtual_destructor_v<HttpUtilityVirtual>);
static_assert(std::is_abstract_v<HttpUtilityVirtual>);
static_assert(std::has_virtual_destructor_v<kvsc::DataBuffer>);
static_assert(std::has_virtual_destructor_v<kvsc::SSLSession>);
static_assert(std::has_virtual_destructor_v<kvsc::SSLConnect>);
static_assert(std::is_base_of_v<kvsc::SSLConnect, kvsc::SSLClient>);

class Utility : public HttpUtilityVirtual {
 public:
  kvsc::HttpErrorIds get(const std::string&) override { return HTTP_ERROR_NONE; }
  kvsc::HttpErrorIds post(const std::string&, const std::string&) override {
    return HTTP_ERROR_NONE;
  }
  std::string parseResponse(const unsigned char*, int) override { return ""; }

  std::string collected() const {
    int length = 0;
    unsigned char* data = getBuffer(&length);
    const std::string text(reinterpret_cast<const char*>(data), static_cast<std::size_t>(length));
    release(data);
    return text;
  }
};

/// The exchange's client with every callback relayed to a utility.
class UtilityExchangeTest : public Exchange {
 protected:
  UtilityExchangeTest() {
    auto* context = static_cast<HttpUtilityVirtual*>(&utility_);
    client_.setHeaderCallback(&HttpUtilityVirtual::writeheadersCallback);
    client_.setBodyCallback(&HttpUtilityVirtual::writeMemoryCallback);
    client_.setProgressCallback(&HttpUtilityVirtual::progressFunction);
    client_.setHeaderContext(context);
    client_.setBodyContext(context);
    client_.setProgressContext(context);
    client_.setCallerUtility(context);
    server_.next(Script()
                     .readRequest()
                     .sendPieces(headers_, headers_.size())
                     .sendPieces("one", 3)
                     .sendPieces("two", 3));
  }

  const std::string headers_ = okResponse("", "A: b\r\n");
  Utility utility_;
};

TEST_F(UtilityExchangeTest, AUtilityCollectsAWholeExchange) {
  std::vector<double> told;
  utility_.setProgressContext(&told);
  utility_.setProgress([](void* context, double downloaded, double total) {
    static_cast<std::vector<double>*>(context)->insert(
        static_cast<std::vector<double>*>(context)->end(), {downloaded, total});
    return 0;
  });
  utility_.setAmountDownloadedSoFar(100);
  utility_.setTotalAmountToDownload(106);
  EXPECT_EQ(get(), HTTP_ERROR_NONE);
  EXPECT_EQ(utility_.getHeaders(), headers_);
  EXPECT_EQ(utility_.collected(), "onetwo");
  EXPECT_EQ(told, (std::vector<double>{103, 106, 106, 106}));
}

TEST_F(UtilityExchangeTest, AUtilityWithoutARelayCancels) {
  EXPECT_EQ(get(), HTTP_ERROR_CANCELLED);
  EXPECT_EQ(utility_.collected(), "one");
  EXPECT_EQ(session_.getConnect(), nullptr);
}

TEST(SlotsTest, TheUtilitysOperationsHaveTheirPlaces) {
  using OfText =
      bool (HttpUtilityVirtual::*)(std::string, bool, bool*, kvsc::HttpErrorIds*, std::string&);
  EXPECT_EQ(slotOf(&HttpUtilityVirtual::get), 2);
  EXPECT_EQ(slotOf(&HttpUtilityVirtual::post), 3);
  EXPECT_EQ(slotOf(static_cast<OfText>(&HttpUtilityVirtual::processServerResponse)), 4);
  EXPECT_EQ(slotOf(&HttpUtilityVirtual::parseResponse), 5);
}

TEST(SlotsTest, TheConnectionsOperationsHaveTheirPlaces) {
  EXPECT_EQ(slotOf(&kvsc::SSLConnect::init), 2);
  EXPECT_EQ(slotOf(&kvsc::SSLConnect::close), 3);
  EXPECT_EQ(slotOf(&kvsc::SSLConnect::checkErrors), -1);
  EXPECT_EQ(slotOf(&kvsc::SSLClient::init), 2);
  EXPECT_EQ(slotOf(&kvsc::SSLClient::close), 3);
  EXPECT_EQ(slotOf(&kvsc::SSLClient::readHeaders), -1);
}

}  // namespace
