#include "platform/linux/bluez_peripheral.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gmock/gmock.h>

#include "platform/linux/bluez_objects.h"
#include "platform/linux/bluez_services.h"
#include "platform/linux/fake_bluez.h"
#include "platform/linux/private_bus.h"
#include "platform/publisher.h"

namespace tandrel {
namespace {

using namespace std::chrono_literals;
using namespace test;
using testing::ElementsAre;

constexpr const char* kPhone = "AA:00:00:00:00:01";
constexpr const char* kOther = "AA:00:00:00:00:02";
// What a headset says it is.
constexpr const char* kAudioSink = "0000110b-0000-1000-8000-00805f9b34fb";

class BluezTest : public testing::Test {
 protected:
    // Unpaced, and without any wait that a test would sit out.
    static BluezOptions options() {
        BluezOptions options;
        options.pace = {.interval = {}, .tolerance = {}, .mostInFlight = 1000};
        options.retry = 20ms;
        options.deafness = 1h;
        return options;
    }
    void start(BluezOptions with = options()) {
        publisher_ = std::make_unique<Publisher>(makeBluezPeripheral(with), services());
        publisher_->readable = kBattery;
    }
    void startWithPhone(BluezOptions with = options()) {
        bluez_.addAdapter("hci0");
        bluez_.appear();
        phone_ = bluez_.addDevice(kPhone);
        start(std::move(with));
        bluez_.use(phone_);
        ASSERT_TRUE(publisher_->awaitSubscriptions(central_, 3));
        publisher_->takeEvents();
    }
    Delivery send(std::uint8_t byte, CharacteristicId characteristic = kKeyboard) {
        return publisher_->send(characteristic, {byte}, {central_});
    }

    std::string advice() {
        return publisher_->with([](auto& peripheral) { return peripheral.advice(); });
    }

    // Of what it says of the adapters, once it has heard all of what has happened.
    void expectAdapters(const std::vector<std::string>& wanted) {
        std::vector<std::string> lines;
        eventually([&] {
            lines.clear();
            for (const auto& a : publisher_->with([](auto& to) { return to.adapters(); })) {
                lines.push_back(fmt::format("{}{}{}{}, drives <{}>, paired <{}>, {} sent away",
                                            a.name, a.canBePeripheral ? " peripheral" : "",
                                            a.powered ? " on" : "",
                                            a.advertising ? " advertising" : "", a.phone,
                                            fmt::join(a.paired, " "), a.refusals));
            }
            return lines == wanted;
        });
        EXPECT_EQ(lines, wanted);
    }

    PrivateBus bus_;
    FakeBluez bluez_;
    std::string phone_;
    const Uuid central_ = bluez::centralOf(kPhone);
    std::unique_ptr<Publisher> publisher_;
};

TEST_F(BluezTest, PublishesInOrderWithFlagsAndWithoutTheDaemonsService) {
    bluez_.addAdapter("hci0");
    bluez_.appear();
    start();
    for (const char* event :
         {"powered on", "added 1801", "added 1812", "added 180F", "advertising"}) {
        EXPECT_TRUE(publisher_->await(event)) << event;
    }
    EXPECT_EQ(bluez_.published("hci0"),
              "/service01 00001812-0000-1000-8000-00805F9B34FB \n"
              "/service01/characteristic00 2A4A read\n"
              "/service01/characteristic01 2A4B encrypt-read\n"
              "/service01/characteristic02 2A4D encrypt-read+notify+encrypt-notify\n"
              "/service01/characteristic02/descriptor00 2908 encrypt-read\n"
              "/service01/characteristic03 2A4D encrypt-read+notify+encrypt-notify\n"
              "/service01/characteristic03/descriptor00 2908 encrypt-read\n"
              "/service01/characteristic04 2A4D "
              "encrypt-read+encrypt-write+write-without-response\n"
              "/service02 0000180F-0000-1000-8000-00805F9B34FB \n"
              "/service02/characteristic00 2A19 read+notify\n"
              "Appearance=03c1\nDiscoverable=yes\nLocalName=Test\nServiceUUIDs=1812\n"
              "Type=peripheral");
}

TEST_F(BluezTest, AnswersReadsAndWrites) {
    startWithPhone();
    const std::tuple<const char*, const char*, unsigned, const char*> rows[] = {
        {"static value", "1/1", 0, "05 01 09"},
        {"its rest", "1/1", 2, "09"},
        {"its end", "1/1", 3, ""},
        {"beyond its end", "1/1", 4, "<org.bluez.Error.InvalidOffset>"},
        {"the delegate's value", "2/0", 0, "64 64"},
        {"the rest of it", "2/0", 1, "64"},
        {"beyond its end", "2/0", 3, "<org.bluez.Error.InvalidOffset>"},
        {"a descriptor", "1/3/0", 0, "02 01"},
        {"none", "1/2", 0, "<org.bluez.Error.NotSupported>"},
    };
    for (const auto& [what, place, offset, answer] : rows) {
        EXPECT_EQ(bluez_.read(phone_, place, offset), answer) << what;
    }
    // More than may wait for their answers at once.
    for (int i = 0; i < 300; ++i) {
        EXPECT_EQ(bluez_.write(phone_, "1/4", {7}), "");
        EXPECT_TRUE(publisher_->await("write 5 of 1"));
    }
    EXPECT_EQ(bluez_.write(phone_, "1/4", Bytes(513)), "<org.bluez.Error.InvalidOffset>");
}

TEST_F(BluezTest, TellsWhatIsMissing) {
    {
        const EnvironmentVariable nowhere("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus");
        start();
        EXPECT_TRUE(publisher_->await("unsupported")) << "no bus";
    }
    start();
    EXPECT_TRUE(publisher_->await("unsupported")) << "no daemon";
    EXPECT_THAT(advice(), testing::HasSubstr("systemctl start bluetooth"));
    bluez_.addAdapter("hci0", {.powered = false, .peripheral = true});
    bluez_.appear();
    EXPECT_TRUE(publisher_->await("powered off"));
    EXPECT_THAT(advice(), testing::HasSubstr("bluetoothctl power on"));
    bluez_.setPowered("hci0", true);
    EXPECT_TRUE(publisher_->await("powered on"));
    EXPECT_TRUE(publisher_->await("advertising"));
    EXPECT_EQ(advice(), "");
    bluez_.vanish();
    EXPECT_TRUE(publisher_->await("resetting"));
    bluez_.removeAdapter("hci0");
    bluez_.addAdapter("hci0", {.powered = true, .peripheral = false});
    bluez_.appear();
    EXPECT_TRUE(publisher_->await("unsupported")) << "no peripheral role";
}

TEST_F(BluezTest, RecoversFromWhateverGoesAndComesBack) {
    startWithPhone();
    // At last, how many applications were registered in all.
    using Deed = std::function<void()>;
    const std::tuple<const char*, Deed, const char*, Deed, int> rows[] = {
        {"adapter off and on", [&] { bluez_.setPowered("hci0", false); }, "powered off",
         [&] { bluez_.setPowered("hci0", true); }, 1},
        {"daemon restarted", [&] { bluez_.vanish(); }, "resetting", [&] { bluez_.appear(); }, 2},
        {"adapter unplugged and back", [&] { bluez_.removeAdapter("hci0"); }, "unsupported",
         [&] {
             bluez_.addAdapter("hci0");
             bluez_.addDevice(kPhone);
         },
         3},
    };
    for (const auto& [what, goes, state, comes, applications] : rows) {
        SCOPED_TRACE(what);
        goes();
        EXPECT_TRUE(publisher_->await(state));
        comes();
        EXPECT_TRUE(publisher_->await("advertising"));
        EXPECT_EQ(bluez_.applicationsRegistered(), applications);
        bluez_.use(phone_);
        EXPECT_TRUE(publisher_->awaitSubscriptions(central_, 3));
        bluez_.forgetReceived(phone_);
        EXPECT_EQ(send(9), Delivery::accepted);
        EXPECT_THAT(bluez_.received(phone_, 1), ElementsAre("1/2 09"));
    }
}

TEST_F(BluezTest, AdvertisesAnewAfterSleepOnceNoPhoneIsConnected) {
    startWithPhone();
    bluez_.sleepAndWake();
    EXPECT_EQ(send(1), Delivery::accepted);
    EXPECT_THAT(bluez_.received(phone_, 1), ElementsAre("1/2 01"));
    EXPECT_EQ(bluez_.advertisementsRegistered(), 1) << "a second phone could come in";
    bluez_.disconnect(phone_);
    EXPECT_TRUE(bluez_.awaitOnAir());
    EXPECT_TRUE(publisher_->awaitSubscriptions(central_, 0));
    bluez_.sleepAndWake();
    EXPECT_TRUE(bluez_.awaitOnAir());
    EXPECT_EQ(bluez_.advertisementsRegistered(), 3);
    EXPECT_TRUE(bluez_.connect(phone_));
    EXPECT_TRUE(publisher_->awaitSubscriptions(central_, 3));
}

TEST_F(BluezTest, ReportsItsAdapters) {
    bluez_.addAdapter("hci1", {.powered = true, .peripheral = false});
    bluez_.addAdapter("hci2", {.powered = false, .peripheral = true});
    startWithPhone();
    const std::string used = "hci0 peripheral on advertising, ";
    std::vector<std::string> wanted = {used + "drives <Phone>, paired <Phone>, 0 sent away",
                                       "hci1 on, drives <>, paired <>, 0 sent away",
                                       "hci2 peripheral, drives <>, paired <>, 0 sent away"};
    expectAdapters(wanted);
    bluez_.disconnect(phone_);
    wanted[0] = used + "drives <>, paired <Phone>, 0 sent away";
    expectAdapters(wanted);
}

TEST_F(BluezTest, PhoneIsFollowedFromItsPassingAddressToItsLastingOne) {
    startWithPhone();
    bluez_.announce(phone_, bluez::kDevice, {{"Address", sdbus::Variant(std::string(kOther))}});
    ASSERT_TRUE(publisher_->awaitSubscriptions(bluez::centralOf(kOther), 3));
    EXPECT_TRUE(publisher_->awaitSubscriptions(central_, 0));
    publisher_->send(kKeyboard, {4}, {bluez::centralOf(kOther)});
    EXPECT_THAT(bluez_.received(phone_, 1), ElementsAre("1/2 04"));
}

TEST_F(BluezTest, SecondPhoneIsSentAwayAndHearsNothingButReleases) {
    startWithPhone();
    const std::pair<const char*, std::function<void(const std::string&)>> ways[] = {
        {kOther,
         [this](const std::string& other) {
             bluez_.subscribe(other);
             bluez_.read(other, "1/1");
         }},
        {"AA:00:00:00:00:03",
         [this](const std::string& other) { EXPECT_FALSE(bluez_.pair(other)); }},
    };
    for (const auto& [address, asks] : ways) {
        SCOPED_TRACE(address);
        bluez_.forgetReceived(phone_);
        send(4);
        EXPECT_THAT(bluez_.received(phone_, 1), ElementsAre("1/2 04"));
        const std::string other = bluez_.addDevice(address);
        bluez_.connect(other);
        asks(other);
        EXPECT_TRUE(publisher_->await("unsubscribed 3"));
        EXPECT_TRUE(bluez_.awaitDisconnected(other));
        ASSERT_TRUE(publisher_->awaitSubscriptions(central_, 3));
        send(5);
        EXPECT_THAT(bluez_.received(phone_, 3), ElementsAre("1/2 04", "1/2 00", "1/2 05"));
        EXPECT_THAT(bluez_.received(other, 0), testing::Each("1/2 00"));
        EXPECT_TRUE(bluez_.isConnected(phone_));
    }
    EXPECT_EQ(advice(), "Phone was disconnected: another phone is connected");
    expectAdapters({"hci0 peripheral on advertising, drives <Phone>, paired <Phone>, 2 sent away"});
}

TEST_F(BluezTest, PhoneThatOnlySubscribesIsToldFromOtherDevices) {
    bluez_.addAdapter("hci0");
    bluez_.appear();
    phone_ = bluez_.addDevice(kPhone);
    const std::string headset = bluez_.addDevice(kOther, "hci0", {kAudioSink});
    bluez_.connectElsewhere(headset);
    start();
    ASSERT_TRUE(publisher_->await("advertising"));
    bluez_.connect(phone_);
    bluez_.subscribe(phone_);
    ASSERT_TRUE(publisher_->awaitSubscriptions(central_, 3));
    publisher_->takeEvents();
    bluez_.disconnect(headset);
    bluez_.connectElsewhere(headset);
    send(4);
    EXPECT_THAT(bluez_.received(phone_, 1), ElementsAre("1/2 04"));
    EXPECT_TRUE(bluez_.isConnected(headset));
    EXPECT_THAT(publisher_->takeEvents(), testing::IsEmpty());
}

TEST_F(BluezTest, EachAdapterDrivesItsOwnPhone) {
    startWithPhone();
    bluez_.addAdapter("hci1");
    const std::string other = bluez_.addDevice(kOther, "hci1");
    bluez_.use(other);
    const Uuid otherCentral = bluez::centralOf(kOther);
    ASSERT_TRUE(publisher_->awaitSubscriptions(otherCentral, 3));
    send(1);
    publisher_->send(kKeyboard, {2}, {otherCentral});
    publisher_->send(kKeyboard, {3}, {central_, otherCentral});
    EXPECT_THAT(bluez_.received(phone_, 2), ElementsAre("1/2 01", "1/2 03"));
    EXPECT_THAT(bluez_.received(other, 2), ElementsAre("1/2 02", "1/2 03"));
}

TEST_F(BluezTest, PacesReportsAndLosesNoneAcrossCharacteristics) {
    auto paced = options();
    paced.pace = {.interval = 3ms, .tolerance = 1ms, .mostInFlight = 2};
    startWithPhone(paced);
    std::vector<std::string> sent;
    int refused = 0;
    for (std::uint8_t i = 0; i < 30; ++i) {
        const bool key = i % 3 == 0;
        while (send(i, key ? kKeyboard : kPointer) == Delivery::refused) {
            ++refused;
            ASSERT_TRUE(publisher_->await("ready"));
        }
        sent.push_back(fmt::format("{} {:02x}", key ? "1/2" : "1/3", i));
    }
    EXPECT_GT(refused, 0);
    EXPECT_EQ(bluez_.received(phone_, 30), sent);
}

TEST_F(BluezTest, ReportsHandedOverBeforeTheEndAreSent) {
    startWithPhone();
    send(4);
    send(0);
    publisher_->end();
    EXPECT_THAT(bluez_.received(phone_, 2), ElementsAre("1/2 04", "1/2 00"));
}

TEST_F(BluezTest, LateAnswerIsWaitedForAndRefusedAdvertisementToldAndTriedAgain) {
    bluez_.addAdapter("hci0");
    bluez_.refuseAdvertisements(2);
    bluez_.appear();
    bluez_.stall();
    start();
    EXPECT_THAT(publisher_->takeEvents(), testing::IsEmpty());
    bluez_.resume();
    EXPECT_TRUE(
        publisher_->await("failed: the Bluetooth service does not advertise it on hci0: "
                          "Maximum advertisements reached"));
    EXPECT_TRUE(publisher_->await("advertising"));
}

TEST_F(BluezTest, SilentPhoneIsSentAwayToSubscribeAnewUnlessItsOwnerStillHasToPair) {
    auto impatient = options();
    impatient.deafness = 20ms;
    bluez_.addAdapter("hci0");
    bluez_.addAdapter("hci1");
    bluez_.appear();
    start(impatient);
    const std::string asking = bluez_.addDevice(kOther, "hci1");
    ASSERT_TRUE(bluez_.awaitOnAir("hci1"));
    bluez_.connect(asking);
    bluez_.read(asking, "1/0");
    const std::string silent = bluez_.addDevice("AA:00:00:00:00:03");
    ASSERT_TRUE(bluez_.awaitOnAir("hci0"));
    bluez_.connect(silent);
    bluez_.pair(silent);
    bluez_.read(silent, "1/1");
    EXPECT_TRUE(bluez_.awaitDisconnected(silent));
    EXPECT_TRUE(bluez_.isConnected(asking));
    bluez_.use(silent);
    EXPECT_TRUE(publisher_->awaitSubscriptions(bluez::centralOf("AA:00:00:00:00:03"), 3));
}

TEST_F(BluezTest, PropertiesOfAnotherTypeChangeNothing) {
    startWithPhone();
    const sdbus::Variant wrong(std::string("no"));
    bluez_.announce("/org/bluez/hci0", bluez::kAdapter, {{"Powered", wrong}});
    bluez_.announce(phone_, bluez::kDevice, {{"Connected", wrong}, {"Address", sdbus::Variant(7)}});
    send(4);
    EXPECT_THAT(bluez_.received(phone_, 1), ElementsAre("1/2 04"));
    EXPECT_THAT(publisher_->takeEvents(), testing::IsEmpty());
}

}  // namespace
}  // namespace tandrel
