// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/PlatformTest.h"
#include "utility/SystemConfigUtil.h"

using S = Util::SystemConfigUtil;

namespace {

const std::string kPrefix = "com.velmora/featureconf/";

enum Info { kAlways, kOnSuccess };
enum Store { kBool, kInt };

struct Query {
    const char* name;
    int (*ask)();
    const char* key;
    const char* error;  // the key follows, unless it names one itself
    const char* info;
    Info when;
    Store store = kBool;
    int fallback = 0;
};

// NOLINTNEXTLINE(cppcoreguidelines-macro-usage): the name is part of the log line
#define Q(function) #function, [] { return static_cast<int>(S::function()); }

// The irregular ones, and one of each regular kind.
const Query kQueries[] = {
    {Q(isA2dpSinkSupport), "sound_mirroring_supported", "fail to get ", "support : [%d]", kAlways},
    {Q(IsCorvi), "product.is_game_screen_monitor", "Fail to get ", "isCorvi = %d", kOnSuccess},
    {Q(IsInternalSpeakerSupported), "internal_speaker_supported", "Fail to get ", "nfcSupport = %d",
     kOnSuccess, kBool, 1},
    {Q(IsOutdoorTv), "outdoor_tv_product_image_support",
     "fail to get com.velmora/featureconf/multiview.dualsound", "dualsound support : [%d]",
     kAlways},
    {Q(IsAmbientSupport), "ambient_screen_support", "fail to ", "ambient support : [%d]",
     kOnSuccess},
    {Q(IsZemiTV), "display_rotator_supported", "Failed to get ", "Is isZEMI :%d", kAlways},
    {Q(GetNumOfSimultaneousHdmiRx), "soc.num_of_simultaneous_supported_hdmi_rx", "Fail to get ",
     "numOfHdmiRx = %d", kOnSuccess, kInt, 1},
    {Q(GetEasyPairingThreshold), "bluetooth.vimba_easy_pairing_threshold", "Fail to get ",
     "threshold = %d", kOnSuccess, kInt, -88},
    {Q(GetIconType), "devicename.icon_index", "Fail to get ", "IconType : [%d]", kOnSuccess, kInt,
     6},
    {Q(IsBLESupport), "ble_support", "Fail to get ", "BLE support : [%d]", kOnSuccess, kInt, 0},
    {Q(IsTessa), "the_tessa_version", "fail to get ", "Is LumeoTV :%d", kAlways, kInt, 0}};

class SystemConfigUtilTest : public PlatformTest {
protected:
    static void Set(const std::string& feature, const std::string& value) {
        Tv::SetFeature(kPrefix + feature, value);
    }
    static void Ask(const Query& q, std::optional<int> stored) {
        Recorder::ClearRecord();
        Tv::SetFeature("", std::nullopt);
        if (stored) {
            Set(q.key,
                q.store == kBool ? (*stored != 0 ? "true" : "false") : std::to_string(*stored));
        }
        const int answer = q.ask();
        const bool isFlag = q.store == kBool || std::string(q.name).find("Is") == 0;
        EXPECT_EQ(answer, !stored ? q.fallback : isFlag ? *stored != 0 : *stored);
        const std::string prefix = std::string("I utility ") + q.name + ": ";
        Texts expected;
        if (!stored) {
            const bool isWhole = std::string(q.error).back() != ' ';
            expected.push_back(prefix + q.error + (isWhole ? "" : kPrefix + q.key));
            expected.back()[0] = 'E';
        }
        if (stored || q.when == kAlways) {
            std::string info = prefix + q.info;
            info.replace(info.find("%d"), 2, std::to_string(stored.value_or(q.fallback)));
            expected.push_back(info);
        }
        EXPECT_EQ(Recorder::Lines(), expected);
        EXPECT_EQ(Recorder::Calls("system_info").size(), 1U);
    }
};

TEST_F(SystemConfigUtilTest, AnswersFromTheStoreOrFallsBack) {
    for (const Query& q : kQueries) {
        SCOPED_TRACE(q.name);
        for (const int stored :
             q.store == kBool ? std::vector<int>{0, 1} : std::vector<int>{0, 7, -1}) {
            Ask(q, stored);
        }
        Ask(q, std::nullopt);
    }
}

TEST_F(SystemConfigUtilTest, ReadsNoSecondKeyInVain) {
    const auto expect = [](bool (*ask)(), bool answer, std::size_t reads) {
        Recorder::ClearRecord();
        EXPECT_EQ(ask(), answer);
        EXPECT_EQ(Recorder::Calls("system_info").size() + Recorder::Calls("vconf").size(), reads);
    };
    expect(S::isA2dpSupport, false, 2);
    Set("sound_mirroring_supported", "true");
    expect(S::isA2dpSupport, true, 2);
    Set("bluetooth.audio_support", "true");
    expect(S::isA2dpSupport, true, 1);

    expect(S::IsLfdProduct, false, 1);
    EXPECT_EQ(Recorder::Lines(),
              Texts({"E utility IsLfdProduct: com.velmora/featureconf/product.product_type",
                     "I utility IsLfdProduct: product type : 0"}));
    Set("product.product_type", "4");
    expect(S::IsLfdProduct, true, 2);
    Set("iwb_support", "true");
    expect(S::IsLfdProduct, false, 2);

    expect(S::IsSupportVelmoraAudioCompatibility, false, 1);
    Set("bluetooth.velmora_audio_compatibility_support", "true");
    expect(S::IsSupportVelmoraAudioCompatibility, false, 2);
    Tv::SetKey("db/nirvo/velmora_audio_compatibility", Tv::Flag{1});
    expect(S::IsSupportVelmoraAudioCompatibility, true, 2);
    EXPECT_EQ(Recorder::Lines("utility", 4).back(),
              "I utility IsSupportVelmoraAudioCompatibilityVconf: "
              "isSupportVelmoraAudioCompatibility vconf = 1");
    expect(S::isLastBtAudioAutoConnectionEnable, false, 1);
    Tv::SetKey("db/nirvo/last_audio_auto_connection", Tv::Flag{1});
    expect(S::isLastBtAudioAutoConnectionEnable, true, 1);
}

TEST_F(SystemConfigUtilTest, DiscoverableUnlessOneSaysNo) {
    const std::string general = "bluetooth.discoverable";
    const std::string classic = "bluetooth.always_classic_discoverable";
    const std::string name = " utility IsBluetoothDiscoverable: ";
    EXPECT_TRUE(S::IsBluetoothDiscoverable());
    EXPECT_EQ(Recorder::TakeStory(), Texts({"E" + name + "fail to get " + kPrefix + general,
                                            "I" + name + "general discoverable : [1]",
                                            "E" + name + "fail to get " + kPrefix + classic,
                                            "I" + name + "classic discoverable : [1]"}));
    Set(general, "true");
    Set(classic, "false");
    EXPECT_FALSE(S::IsBluetoothDiscoverable());
    Recorder::ClearRecord();
    Set(general, "false");
    Set(classic, "true");
    EXPECT_FALSE(S::IsBluetoothDiscoverable());
    EXPECT_EQ(Recorder::TakeStory(), Texts({"I" + name + "general discoverable : [0]"}));
}

TEST_F(SystemConfigUtilTest, ReadsTheLowByteOfTheIrKeyCode) {
    unsigned char code = 9;
    EXPECT_FALSE(S::GetIrKeyCode(code));
    EXPECT_EQ(code, 9);
    Tv::SetFeature("value/1200", "498");  // 0x1F2
    EXPECT_TRUE(S::GetIrKeyCode(code));
    EXPECT_EQ(code, 0xF2);
}

TEST_F(SystemConfigUtilTest, KeepsWhatItReadOnce) {
    const std::pair<bool (*)(), std::pair<const char*, std::string>> cached[] = {
        {S::IsLumeoTV, {"lumeo_tv", "IsLumeoTV: Is LumeoTV :"}},
        {S::IsArtModeOnly, {"artapp.artmode_only_support", "IsArtModeOnly: Is ArtModeOnly :"}},
    };
    for (const auto& [ask, texts] : cached) {
        Set(texts.first, "not a flag");
        Recorder::ClearRecord();
        EXPECT_FALSE(ask());
        EXPECT_THAT(Recorder::TakeStory(),
                    ElementsAre(HasSubstr("fail to get "
                                          "com.velmora/featureconf/multiview.dualsound")));
        Set(texts.first, "true");
        EXPECT_TRUE(ask()) << "a failed read is tried again";
        Set(texts.first, "false");
        EXPECT_TRUE(ask());
        EXPECT_EQ(Recorder::Calls("system_info").size(), 1U);
        EXPECT_EQ(Recorder::Story(), Texts(2, "I utility " + texts.second + "1"));
    }
}

}  // namespace
