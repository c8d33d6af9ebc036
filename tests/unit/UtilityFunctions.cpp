// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/UtilityFunctions.h"

#include <glib.h>

#include "tests/recorder/Recorder.h"
#include "tests/recorder/Tv.h"
#include "utility/AppDataUtil.h"
#include "utility/AppManagerUtil.h"
#include "utility/BluetoothUtil.h"
#include "utility/CommonUtil.h"
#include "utility/JsonUtil.h"
#include "utility/SystemConfigUtil.h"
#include "utility/TvStatusUtil.h"
#include "utility/VconfUtil.h"

using namespace Util;

namespace Utility {

std::optional<Database> database;

namespace {

using Callable::Function;
using Callable::Make;
using Callable::Of;

// ---- functions with arguments that are no words ----

bool Launch(const std::string& id, bool isSync, const std::string& extras) {
    AppManagerUtil::Extras pairs;
    for (const std::string& extra : Script::Words(extras)) {
        const std::size_t end = extra.find('=');
        pairs.emplace_back(extra.substr(0, end), extra.substr(end + 1));
    }
    return AppManagerUtil::LaunchApp(id, pairs, isSync);
}
void OnKeyChanged(keynode_t* /*node*/, void* name) {
    Recorder::Enter(Recorder::Kind::kCommand, Recorder::Thread::kMain, "changed",
                    static_cast<const char*>(name));
}
int WatchKey(int id) {
    static char name[] = "key";
    return VconfUtil::AddVconfChangedCb(id, OnKeyChanged, name);
}
int UnwatchKey(int id) {
    return VconfUtil::RemoveVconfChangedCb(id, OnKeyChanged);
}

// A timer that runs, and how often that many calls for it leave it removed.
void RemoveTimer(int calls) {
    unsigned int timer = g_timeout_add(
        10, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
    Tv::Advance(35);
    for (int i = 0; i < calls; ++i) {
        CommonUtil::RemoveTimer(&timer);
    }
}
bool ForgetAccessory(std::string address) {
    bt_adapter_headless_dev_info_s info = {address == "null" ? nullptr : address.data()};
    return BluetoothUtil::RemoveAllHeadlessDeviceCb(&info, nullptr);
}
std::string ParseJson(const std::string& text) {
    return JsonUtil::JsonToString(JsonUtil::StringToJson(text));
}

template <typename T>
Function FieldReader() {
    return Make<bool, std::string, bt_db_fields_e, T&>(
        [](const std::string& address, bt_db_fields_e field, T& value) {
            return database->GetDataFromDB(address, field, value);
        });
}
template <typename T>
Function FieldWriter() {
    return Make<bool, std::string, bt_db_fields_e, T>(
        [](const std::string& address, bt_db_fields_e field, T value) {
            return database->UpdateDataOnDB(address, field, value);
        });
}

// clang-format off
#define NAMED(name, ...) {name, __VA_ARGS__}
#define FUNCTION(name) {#name, Of(&name)}
#define METHOD(name) {"Database::" #name, Of(database, &BTDatabaseManager::name)}
const std::map<std::string, Function> kFunctions = {
    FUNCTION(AppDataUtil::GetAppDataFilePath), FUNCTION(AppDataUtil::GetAppSharedResourcePath),
    FUNCTION(AppManagerUtil::DoesHaveMetadata), FUNCTION(AppManagerUtil::GetVisibleAppList),
    FUNCTION(AppManagerUtil::IsAppForeGround), FUNCTION(AppManagerUtil::IsAppRunning),
    FUNCTION(AppManagerUtil::IsPackageInstalled), FUNCTION(AppManagerUtil::IsUpdating),
    FUNCTION(AppManagerUtil::launchBluetoothAudioList),
    FUNCTION(AppManagerUtil::launchBluetoothDeviceist),
    NAMED("AppManagerUtil::LaunchApp", Of(Launch)),
    FUNCTION(BluetoothUtil::DeleteDeviceFromDB), FUNCTION(BluetoothUtil::GetAdapterName),
    FUNCTION(BluetoothUtil::GetAdapterState), FUNCTION(BluetoothUtil::GetConnectedA2dpDevice),
    FUNCTION(BluetoothUtil::GetConnectedDevices),
    FUNCTION(BluetoothUtil::GetConnectedHidDeviceNumber), FUNCTION(BluetoothUtil::GetDeviceName),
    FUNCTION(BluetoothUtil::GetDeviceType), FUNCTION(BluetoothUtil::GetLastVelmoraAudioDevice),
    FUNCTION(BluetoothUtil::GetNumberOfBtdevice), FUNCTION(BluetoothUtil::GetStringDeviceType),
    FUNCTION(BluetoothUtil::IsAdapterNameStartsWithTVprefix),
    FUNCTION(BluetoothUtil::IsConnectedDevice), FUNCTION(BluetoothUtil::IsMobile),
    FUNCTION(BluetoothUtil::IsPairedDevice), FUNCTION(BluetoothUtil::IsUseDevice),
    FUNCTION(BluetoothUtil::IsVelmoraAudio), FUNCTION(BluetoothUtil::RemoveAllHeadlessDevice),
    FUNCTION(BluetoothUtil::sendPowerOffCmd), FUNCTION(BluetoothUtil::SetAdapterConnectable),
    FUNCTION(BluetoothUtil::SetAdapterDisable), FUNCTION(BluetoothUtil::SetAdapterEnable),
    FUNCTION(BluetoothUtil::SetAdapterReset), FUNCTION(BluetoothUtil::SetAdapterVisibility),
    FUNCTION(BluetoothUtil::SetAutoAcceptDevice), FUNCTION(BluetoothUtil::SetUseDontuse),
    NAMED("BluetoothUtil::RemoveAllHeadlessDeviceCb", Of(ForgetAccessory)),
    FUNCTION(CommonUtil::CheckExist), FUNCTION(CommonUtil::convertToUIntFromHexString),
    FUNCTION(CommonUtil::ERR_STR), FUNCTION(CommonUtil::IsValidAddress),
    FUNCTION(CommonUtil::RemoveColon), FUNCTION(CommonUtil::StartsWith),
    FUNCTION(CommonUtil::StrSplit), FUNCTION(CommonUtil::ToCapital),
    NAMED("CommonUtil::RemoveTimer", Of(RemoveTimer)),
    FUNCTION(SystemConfigUtil::GetEasyPairingThreshold), FUNCTION(SystemConfigUtil::GetIconType),
    FUNCTION(SystemConfigUtil::GetIrKeyCode),
    FUNCTION(SystemConfigUtil::GetNumOfSimultaneousHdmiRx),
    FUNCTION(SystemConfigUtil::isA2dpSinkSupport), FUNCTION(SystemConfigUtil::isA2dpSupport),
    FUNCTION(SystemConfigUtil::IsAmbientSupport), FUNCTION(SystemConfigUtil::IsArtModeOnly),
    FUNCTION(SystemConfigUtil::IsBLESupport), FUNCTION(SystemConfigUtil::IsBluetoothDiscoverable),
    FUNCTION(SystemConfigUtil::IsCorvi), FUNCTION(SystemConfigUtil::IsInternalSpeakerSupported),
    FUNCTION(SystemConfigUtil::isLastBtAudioAutoConnectionEnable),
    FUNCTION(SystemConfigUtil::IsLfdProduct), FUNCTION(SystemConfigUtil::IsLumeoTV),
    FUNCTION(SystemConfigUtil::IsOutdoorTv),
    FUNCTION(SystemConfigUtil::IsSupportVelmoraAudioCompatibility),
    FUNCTION(SystemConfigUtil::IsTessa), FUNCTION(SystemConfigUtil::IsZemiTV),
    FUNCTION(TvStatusUtil::GetAmbientMode), FUNCTION(TvStatusUtil::GetAmbientType),
    FUNCTION(TvStatusUtil::GetTvSpeakerMute), FUNCTION(TvStatusUtil::GetWifiChannel),
    FUNCTION(TvStatusUtil::IsArtAppShowing), FUNCTION(TvStatusUtil::isBluetoothSpeakerSelection),
    FUNCTION(TvStatusUtil::IsValidPowerState), FUNCTION(TvStatusUtil::isWifiSpeakerConnecting),
    FUNCTION(TvStatusUtil::LockLpmPowerState), FUNCTION(TvStatusUtil::PictureOn),
    FUNCTION(TvStatusUtil::SetPowerState), FUNCTION(TvStatusUtil::SetStandbyPowerLock),
    FUNCTION(TvStatusUtil::SleepTv), FUNCTION(TvStatusUtil::UnlockLpmPowerState),
    FUNCTION(TvStatusUtil::UnSetStandbyPowerLock), FUNCTION(TvStatusUtil::WakeUpTv),
    METHOD(PrepareDatabase), METHOD(OpenDatabase), METHOD(CloseDatabase), METHOD(CreateTable),
    METHOD(CreateManufacturerTable), METHOD(CreateVolumeInfoTable), METHOD(IsTableExist),
    METHOD(DropTable), METHOD(DeleteDBFiles), METHOD(InsertData), METHOD(IsRecordExist),
    METHOD(executeRecordExistQuery), METHOD(GetRecordFromDB), METHOD(DeleteRecord),
    METHOD(DeleteAllRecord), METHOD(GetRecordCount), METHOD(GetAllRecordFromDB),
    METHOD(GetAllDontuseDeivceRecord), METHOD(printAllrecord), METHOD(getModelNameFromDB),
    METHOD(addToManufacturerDataCache), METHOD(deleteToManufacturerDataCache),
    METHOD(insertManufacturerData), METHOD(getManufacturerData), METHOD(isManufacturerRecordExist),
    METHOD(deleteManufacturerRecord), METHOD(getAbsVolConnectedHistory),
    METHOD(setAbsVolConnectedHistory), METHOD(DeleteVolInfo),
    NAMED("Database::GetDataFromDB:text", FieldReader<std::string>()),
    NAMED("Database::GetDataFromDB:int", FieldReader<int>()),
    NAMED("Database::UpdateDataOnDB:text", FieldWriter<std::string>()),
    NAMED("Database::UpdateDataOnDB:int", FieldWriter<int>()),
    NAMED("VconfUtil::SetVconf:text", Of<void, int, std::string>(VconfUtil::SetVconf)),
    NAMED("VconfUtil::SetVconfAsync:text", Of<void, int, std::string>(VconfUtil::SetVconfAsync)),
    NAMED("VconfUtil::GetVconf:text", Of<void, int, std::string&>(VconfUtil::GetVconf)),
    NAMED("VconfUtil::SetVconf:literal", Of<void, int, const char*>(VconfUtil::SetVconf)),
    NAMED("VconfUtil::SetVconfAsync:literal", Of<void, int, const char*>(VconfUtil::SetVconfAsync)),
    NAMED("VconfUtil::SetVconf:bool", Of<void, int, bool>(VconfUtil::SetVconf)),
    NAMED("VconfUtil::SetVconfAsync:bool", Of<void, int, bool>(VconfUtil::SetVconfAsync)),
    NAMED("VconfUtil::GetVconf:bool", Of<void, int, bool&>(VconfUtil::GetVconf)),
    NAMED("VconfUtil::SetVconf:int", Of<void, int, int>(VconfUtil::SetVconf)),
    NAMED("VconfUtil::SetVconfAsync:int", Of<void, int, int>(VconfUtil::SetVconfAsync)),
    NAMED("VconfUtil::GetVconf:int", Of<void, int, int&>(VconfUtil::GetVconf)),
    NAMED("VconfUtil::AddVconfChangedCb", Of(WatchKey)),
    NAMED("VconfUtil::RemoveVconfChangedCb", Of(UnwatchKey)),
    NAMED("JsonUtil", Of(ParseJson))};
// clang-format on

}  // namespace

const Function* Find(const std::string& name) {
    const auto found = kFunctions.find(name);
    return found != kFunctions.end() ? &found->second : nullptr;
}

}  // namespace Utility
