// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tv-sim/BluezInterfaces.h"

#include "common/CHandle.h"

namespace TvSim {
namespace {

// Signatures and names as BlueZ's documentation gives them, without what no client of a TV uses.
constexpr char kXml[] = R"(<node>
<interface name='org.freedesktop.DBus.Introspectable'>
  <method name='Introspect'><arg type='s' direction='out'/></method>
</interface>
<interface name='org.freedesktop.DBus.Properties'>
  <method name='Get'><arg type='s' direction='in'/><arg type='s' direction='in'/><arg type='v' direction='out'/></method>
  <method name='Set'><arg type='s' direction='in'/><arg type='s' direction='in'/><arg type='v' direction='in'/></method>
  <method name='GetAll'><arg type='s' direction='in'/><arg type='a{sv}' direction='out'/></method>
  <signal name='PropertiesChanged'><arg type='s'/><arg type='a{sv}'/><arg type='as'/></signal>
</interface>
<interface name='org.freedesktop.DBus.ObjectManager'>
  <method name='GetManagedObjects'><arg type='a{oa{sa{sv}}}' direction='out'/></method>
  <signal name='InterfacesAdded'><arg type='o'/><arg type='a{sa{sv}}'/></signal>
  <signal name='InterfacesRemoved'><arg type='o'/><arg type='as'/></signal>
</interface>
<interface name='org.bluez.Adapter1'>
  <method name='StartDiscovery'/>
  <method name='StopDiscovery'/>
  <method name='SetDiscoveryFilter'><arg name='properties' type='a{sv}' direction='in'/></method>
  <method name='GetDiscoveryFilters'><arg name='filters' type='as' direction='out'/></method>
  <method name='RemoveDevice'><arg name='device' type='o' direction='in'/></method>
  <property name='Address' type='s' access='read'/>
  <property name='AddressType' type='s' access='read'/>
  <property name='Name' type='s' access='read'/>
  <property name='Alias' type='s' access='readwrite'/>
  <property name='Class' type='u' access='read'/>
  <property name='Powered' type='b' access='readwrite'/>
  <property name='Discoverable' type='b' access='readwrite'/>
  <property name='DiscoverableTimeout' type='u' access='readwrite'/>
  <property name='Pairable' type='b' access='readwrite'/>
  <property name='PairableTimeout' type='u' access='readwrite'/>
  <property name='Discovering' type='b' access='read'/>
  <property name='UUIDs' type='as' access='read'/>
  <property name='Modalias' type='s' access='read'/>
  <property name='Roles' type='as' access='read'/>
</interface>
<interface name='org.bluez.LEAdvertisingManager1'>
  <method name='RegisterAdvertisement'><arg type='o' direction='in'/><arg type='a{sv}' direction='in'/></method>
  <method name='UnregisterAdvertisement'><arg type='o' direction='in'/></method>
</interface>
<interface name='org.bluez.Device1'>
  <method name='Connect'/>
  <method name='Disconnect'/>
  <method name='ConnectProfile'><arg name='UUID' type='s' direction='in'/></method>
  <method name='DisconnectProfile'><arg name='UUID' type='s' direction='in'/></method>
  <method name='Pair'/>
  <method name='CancelPairing'/>
  <property name='Address' type='s' access='read'/>
  <property name='AddressType' type='s' access='read'/>
  <property name='Name' type='s' access='read'/>
  <property name='Alias' type='s' access='readwrite'/>
  <property name='Class' type='u' access='read'/>
  <property name='Icon' type='s' access='read'/>
  <property name='Paired' type='b' access='read'/>
  <property name='Bonded' type='b' access='read'/>
  <property name='Trusted' type='b' access='readwrite'/>
  <property name='Blocked' type='b' access='readwrite'/>
  <property name='LegacyPairing' type='b' access='read'/>
  <property name='RSSI' type='n' access='read'/>
  <property name='Connected' type='b' access='read'/>
  <property name='UUIDs' type='as' access='read'/>
  <property name='Modalias' type='s' access='read'/>
  <property name='Adapter' type='o' access='read'/>
  <property name='ManufacturerData' type='a{qv}' access='read'/>
  <property name='ServicesResolved' type='b' access='read'/>
</interface>
<interface name='org.bluez.MediaEndpoint1'>
  <property name='UUID' type='s' access='read'/>
  <property name='Codec' type='y' access='read'/>
  <property name='Capabilities' type='ay' access='read'/>
  <property name='Device' type='o' access='read'/>
  <property name='DelayReporting' type='b' access='read'/>
</interface>
<interface name='org.bluez.MediaTransport1'>
  <method name='Acquire'><arg type='h' direction='out'/><arg type='q' direction='out'/><arg type='q' direction='out'/></method>
  <method name='TryAcquire'><arg type='h' direction='out'/><arg type='q' direction='out'/><arg type='q' direction='out'/></method>
  <method name='Release'/>
  <property name='Device' type='o' access='read'/>
  <property name='UUID' type='s' access='read'/>
  <property name='Codec' type='y' access='read'/>
  <property name='Configuration' type='ay' access='read'/>
  <property name='State' type='s' access='read'/>
  <property name='Volume' type='q' access='read'/>
</interface>
<interface name='org.bluez.MediaControl1'>
  <method name='Play'/><method name='Pause'/><method name='Stop'/>
  <method name='Next'/><method name='Previous'/>
  <property name='Connected' type='b' access='read'/>
  <property name='Player' type='o' access='read'/>
</interface>
<interface name='org.bluez.MediaPlayer1'>
  <method name='Play'/><method name='Pause'/><method name='Stop'/>
  <method name='Next'/><method name='Previous'/>
  <property name='Device' type='o' access='read'/>
  <property name='Name' type='s' access='read'/>
  <property name='Status' type='s' access='read'/>
  <property name='Position' type='u' access='read'/>
  <property name='Track' type='a{sv}' access='read'/>
</interface>
</node>)";

}  // namespace

GDBusInterfaceInfo* FindInterfaceInfo(const std::string& name) {
    static const GDBusNodeInfoPtr node(g_dbus_node_info_new_for_xml(kXml, nullptr));
    return g_dbus_node_info_lookup_interface(node.get(), name.c_str());
}

}  // namespace TvSim
