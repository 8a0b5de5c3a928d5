#pragma once

#include <bitset>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "common/AccessLock.h"
#include "common/Wwn.h"
#include "common/cim_log.h"
#include "common/export.h"
#include "common/thread_annotations.h"
#include "datacache/BladeState.h"
#include "datacache/ChassisState.h"
#include "datacache/DataCacheEvent.h"
#include "datacache/EvalSignal.h"
#include "datacache/FabricCache.h"
#include "datacache/PortState.h"
#include "datacache/SwitchState.h"
#include "switchlib/NORV_Vex_Lib.h"
#include "vexlib/vexlib.h"
#include "zoning/ZoningCache.h"

struct FabricStep;
class SmlBatch;

/** The host's callback: called with the access lock held; see DataCacheEvent. */
using DataCacheCallback = void (*)(DataCacheEvent*);

/**
 * The cache of one switch and its fabric, as one object for the whole process.
 *
 * A host calls init(), then start() with its callback, once each, from one thread. From then on a thread of
 * the cache follows the switch: vexlib's notifications are queued as they come, and the evaluation thread
 * takes them up, re-reads the areas that they touch, and tells the host what changed. Nothing stops the
 * thread, and the object is never destroyed while the process lives.
 *
 * Reading: bracket every use of the cache by getInstance() and releaseInstance(), which take and release the
 * recursive access lock; pointers that lookups return are good until the release. Calls that say "takes
 * access_lock" take it themselves as well, so a single one of them needs no bracket of its own where it is
 * called through a pointer that the host kept.
 *
 * Waiting: an area whose read failed is read again at the next pass, and a pass comes only with a switch
 * event or reloadZoning(); there is no timer. isCacheReady() says whether the last pass found every area up
 * to date.
 *
 * The members that begin with an underscore are the cache's own rooms. They are public for its tests; a host
 * stays out.
 */
class DC_EXPORT DataCache {
  public:
    DataCache();
    virtual ~DataCache();
    DataCache(const DataCache&) = delete;
    DataCache& operator=(const DataCache&) = delete;

    // ---- Start-up and access ----

    /**
     * Makes the access lock and the instance and connects to the switch, trying every 10 seconds until it
     * succeeds; then loads the zoning limits. Returns true always. Call it before any other thread uses the
     * cache: it initialises the lock at every call.
     */
    static bool init();
    /** Stores the callback, registers for events, and starts the evaluation thread. Returns true always. */
    static bool start(DataCacheCallback callback);
    /** Takes the access lock and returns the instance: null before init(), and the lock is held even then. */
    static DataCache* getInstance() DC_ACQUIRE(access_lock);
    static void releaseInstance() DC_RELEASE(access_lock);

    /** The instance; created by init(). */
    static DataCache* instance;

    /** True when any area is marked for update. */
    bool workToDo() DC_TAKES(access_lock);
    /** Marks all areas, or one, for update by the next pass, whatever wakes it; these do not wake it. */
    void updateAll() DC_TAKES(access_lock);
    void updateSwitch() DC_TAKES(access_lock);
    void updateChassis() DC_TAKES(access_lock);
    void updateBlades() DC_TAKES(access_lock);
    void updatePorts() DC_TAKES(access_lock);
    void updateFabric() DC_TAKES(access_lock);
    void updateAccounts() DC_TAKES(access_lock);
    void updateZoning() DC_TAKES(access_lock);
    /** Has the configured zoning loaded anew, whatever its checksum, and wakes the evaluation thread for it.
     */
    void reloadZoning() DC_TAKES(access_lock);
    /** True when the last pass found every area up to date. */
    bool isCacheReady() DC_TAKES(access_lock);
    /** Marks all local ports, or one (0 to 255), to be read again. Throws std::out_of_range "bitset::set". */
    void localPortRefreshSet() DC_TAKES(access_lock);
    void localPortRefreshSet(int port) DC_TAKES(access_lock);

    // ---- The local switch and its chassis ----

    bool isTransparentSwitch() const DC_TAKES(access_lock);
    bool isFCOESwitch() const DC_TAKES(access_lock);
    Wwn getRootSwitchWorldWideName() const DC_TAKES(access_lock);
    /** The local switch's name as 16 hexadecimal digits. */
    std::string getRootSwitchWwn() const DC_TAKES(access_lock);
    /** The local switch's domain ID in its fabric; 0 on a transparent switch. */
    unsigned char getRootSwitchDomainID() const DC_TAKES(access_lock);
    /** Empty before the chassis was read; then 0 or 32768 (self test failed), and 0 or 32769 (management
     * processor). */
    std::vector<unsigned short> getSwitchFaults() const DC_TAKES(access_lock);
    /** Power supplies of the chassis, at most 16. */
    uint16_t getRootPowerSupplyCount() const DC_TAKES(access_lock);

    // ---- Blades; slots are counted from 0 ----

    /** The first slot with an I/O blade, or 65535. */
    uint16_t getFirstRootIOBladeIndex() const DC_TAKES(access_lock);
    /** The next slot after `slot` with an I/O blade, or 65535. Throws std::out_of_range "bitset::test". */
    uint16_t getNextRootIOBladeIndex(const uint16_t& slot) const DC_TAKES(access_lock);
    /** Sensors of the blade in a slot; 0 for slots beyond 31. */
    uint16_t getRootTemperatureSensorCount(const uint16_t& slot) const DC_TAKES(access_lock);
    uint16_t getRootVoltageSensorCount(const uint16_t& slot) const DC_TAKES(access_lock);
    uint16_t getRootSlotCount() const DC_TAKES(access_lock);

    // ---- Local ports and transceivers; indexes are decimal texts, counted from 0 ----

    /** CIM port type, or 0 for an index of 256 and more. */
    uint16_t getPortType(const std::string& index) const DC_TAKES(access_lock);
    /** CIM hardware type, or 0 for an index of 256 and more. */
    uint16_t getPortHWType(const std::string& index) const DC_TAKES(access_lock);
    /** 0 SFP, 1 another known form, 2 unknown or none. These four throw std::out_of_range "bitset::test". */
    uint8_t getTransceiverFormat(const std::string& index) const DC_TAKES(access_lock);
    bool getTransceiverDDMSupported(const std::string& index) const DC_TAKES(access_lock);
    std::string getTransceiverVendorSN(const std::string& index) const DC_TAKES(access_lock);
    std::string getTransceiverVendorOUI(const std::string& index) const DC_TAKES(access_lock);
    /** The first port whose transceiver has this vendor OUI and serial number; empty for none. */
    std::string getRootPortIndexForTransceiver(const std::string& oui, const std::string& serial) const
        DC_TAKES(access_lock);
    /** Walks the ports that exist, less those of type 16004 (pass-through); empty at the end. */
    std::string getFirstRootPortIndex() const DC_TAKES(access_lock);
    std::string getNextRootPortIndex(const std::string& index) const DC_TAKES(access_lock);
    /** Ports that are scanned, at most 128. */
    uint16_t getMaxRootPorts() const DC_TAKES(access_lock);

    // ---- The fabric and the addressing of its ports ----

    /** The fabric for the number 1, null for any other. */
    FabricCache* getFabric(unsigned short number) DC_TAKES(access_lock);
    /** A port's index in its switch, or 65535; the text form gives an empty text. */
    uint16_t calcPortIndex(const Wwn& switchName, const Wwn& portName) DC_TAKES(access_lock);
    std::string calcPortIndex(const std::string& switchName, const std::string& portName)
        DC_TAKES(access_lock);
    /** A port's name, or the null name (an empty text). Local indexes above 255 throw std::out_of_range
     * "bitset::test". */
    Wwn calcPortWorldWideName(const Wwn& switchName, unsigned short index) const DC_TAKES(access_lock);
    std::string calcPortWwn(const std::string& switchName, const std::string& index) const
        DC_TAKES(access_lock);

    // ---- Translations of the switch's state words into CIM values ----

    static std::vector<unsigned short> smlSwitchStateToCIMOperationalStatus(
        const char* operState, const std::vector<unsigned short>& faults);
    static std::vector<unsigned short> smlIOBladeStateToCIMOperationalStatus(const std::string& operState,
                                                                             const std::string& adminState,
                                                                             const std::string& diagStatus);
    static std::vector<unsigned short> smlPortStateToCIMOperationalStatus(const std::string& operState,
                                                                          const std::string& adminState);
    static uint16_t smlTypeToCIMType(const std::string& type);
    static uint16_t smlHWTypeToCIMHWType(const std::string& type);
    static HardwareStatus _smlConvToHardwareStatus(char* state);

    // ---- Lifecycle ----

    bool startVexlib();
    bool startEvalThread();
    static void* evalThread(void*);
    bool evaluateCaches() DC_REQUIRES(access_lock);

    void _drainEventQueue() DC_REQUIRES(access_lock);
    void _updateAreas() DC_REQUIRES(access_lock);

    // ---- Switch events ----

    static const char* _tagToString(int code);
    bool startEventMonitor(DataCacheCallback callback);
    static void vexlibNotificationCB(void* context, vex_event_s* event, void* user) DC_TAKES(access_lock);
    void queueVexlibEvent(vex_event_s* event) DC_TAKES(access_lock);
    void vexlibEventKick(vex_eventcode_e code, vex_eventsource_s* source, char* text) DC_TAKES(access_lock);
    void _vexlibNotificationCB(vex_event_s* event) DC_REQUIRES(access_lock);
    void _markAreas(int32_t code, int32_t port) DC_REQUIRES(access_lock);
    void _actOnEvent(int32_t code, const std::string& text) DC_REQUIRES(access_lock);
    void _sendEnvEvent(const char* component, const char* condition, const std::string& description)
        DC_REQUIRES(access_lock);
    template <class Event>
    void _sendNameServerEvents(const std::string& text) DC_REQUIRES(access_lock);
    void _mediaInserted(const std::string& text) DC_REQUIRES(access_lock);
    void _mediaRemoved(const std::string& text) DC_REQUIRES(access_lock);

    // ---- Loaders: one area each, called by the pass; the accounts' by the host ----

    int _getSwitchInfo() DC_REQUIRES(access_lock);
    int _getChassisInfo() DC_REQUIRES(access_lock);
    void _reportPowerSupplies() DC_REQUIRES(access_lock);
    bool _getBladeInfo() DC_REQUIRES(access_lock);
    void _reportBlades(uint16_t fans, uint16_t powerSupplies) DC_REQUIRES(access_lock);
    void _reportBladeAdd(uint16_t kind, uint16_t slot) DC_REQUIRES(access_lock);
    void _reportBladeRemove(uint16_t kind, uint16_t slot, uint16_t fans, uint16_t powerSupplies)
        DC_REQUIRES(access_lock);
    bool _getPortInfo() DC_REQUIRES(access_lock);
    bool _readPortCount() DC_REQUIRES(access_lock);
    bool _readMarkedPorts() DC_REQUIRES(access_lock);
    bool _readPort(SmlBatch& batch, unsigned port) DC_REQUIRES(access_lock);
    bool _readPortNames(uint8_t& domain, Wwn& principal) DC_REQUIRES(access_lock);
    void _updateLocalSwitch(uint8_t domain) DC_REQUIRES(access_lock);
    void _reportPorts(const Wwn& fabric) DC_REQUIRES(access_lock);
    bool _getFabricInfo() DC_REQUIRES(access_lock);
    bool _getAcctInfo() DC_REQUIRES(access_lock);
    int _getZoningInfo() DC_REQUIRES(access_lock);

    bool _load_fabric_info() DC_REQUIRES(access_lock);
    bool _load_switch_domain_list() DC_REQUIRES(access_lock);
    /** The load's part for one domain of the list; false when the load has failed. */
    bool _loadDomain(const std::string& domain) DC_REQUIRES(access_lock);
    /** Carries out one step of the comparison with the fabric before the load. */
    void _reportFabricStep(const FabricStep& step) DC_REQUIRES(access_lock);
    bool _load_mserver_ports() DC_REQUIRES(access_lock);
    /** Fills the port table of one remote switch; false when the load has failed. */
    bool _loadSwitchPorts(SwitchCache& remote) DC_REQUIRES(access_lock);
    static std::vector<std::string> _parseSMLList(std::string list);
    static bool _fabricContainsWWN(std::vector<Wwn> names, Wwn name);
    static std::string _sanitizedMediaVendorSN(const char* text);

    /** Hands an event to the host. A host that set no callback gets none. */
    void _notifyHost(DataCacheEvent& event) DC_REQUIRES(access_lock);

    // ---- State ----

    ZoningCache _zoningCache;
    uint32_t _handle = 0;  ///< connection handle; written before there are threads
    DataCacheCallback _callback DC_GUARDED_BY(access_lock) = nullptr;
    std::deque<vex_event_s*> _eventQueue DC_GUARDED_BY(access_lock);  ///< owned copies, oldest first

    bool _switchUpdate DC_GUARDED_BY(access_lock) = true;
    bool _chassisUpdate DC_GUARDED_BY(access_lock) = true;
    bool _bladesUpdate DC_GUARDED_BY(access_lock) = true;
    bool _portsUpdate DC_GUARDED_BY(access_lock) = true;
    bool _fabricUpdate DC_GUARDED_BY(access_lock) = true;
    bool _accountsUpdate DC_GUARDED_BY(access_lock) = true;
    bool _zoningUpdate DC_GUARDED_BY(access_lock) = true;

    bool _switchOK DC_GUARDED_BY(access_lock) = false;
    bool _chassisOK DC_GUARDED_BY(access_lock) = false;
    bool _bladesOK DC_GUARDED_BY(access_lock) = false;
    bool _portsOK DC_GUARDED_BY(access_lock) = false;
    bool _fabricOK DC_GUARDED_BY(access_lock) = false;
    bool _accountsOK DC_GUARDED_BY(access_lock) = false;
    bool _zoningOK DC_GUARDED_BY(access_lock) = false;
    bool _cacheReady DC_GUARDED_BY(access_lock) = false;

    SwitchState _switchState DC_GUARDED_BY(access_lock);
    SwitchState _prevSwitchState DC_GUARDED_BY(access_lock);
    ChassisState _chassisState DC_GUARDED_BY(access_lock);
    ChassisState _prevChassisState DC_GUARDED_BY(access_lock);
    uint16_t bladeSlotCount DC_GUARDED_BY(access_lock) = 0;  ///< slots of the chassis; 0 for fewer than 2
    BladeState _bladeState DC_GUARDED_BY(access_lock);
    BladeState _prevBladeState DC_GUARDED_BY(access_lock);

    std::bitset<kPortRows> _localPortRefresh DC_GUARDED_BY(access_lock);  ///< ports that the next scan reads
    PortState _portState DC_GUARDED_BY(access_lock);
    PortState _prevPortState DC_GUARDED_BY(access_lock);
    TransceiverState _transceivers DC_GUARDED_BY(access_lock);

    std::vector<std::string> _accounts DC_GUARDED_BY(access_lock);  ///< in the switch's order
    std::vector<std::string> _prevAccounts DC_GUARDED_BY(access_lock);

    FabricCache _fabric DC_GUARDED_BY(access_lock);
    std::vector<Wwn> _origFabric DC_GUARDED_BY(access_lock);    ///< switches before the current load
    Wwn _origFabricName DC_GUARDED_BY(access_lock);             ///< fabric name before the current load
    int32_t _fabricInitialized DC_GUARDED_BY(access_lock) = 0;  ///< 1 once a load was complete
    /** The switch whose ports are being read, null outside the port load, and the uptime at its first read.
     */
    Element<SwitchCache>* _mserverSwitch DC_GUARDED_BY(access_lock) = nullptr;
    long _mserverRequestTime DC_GUARDED_BY(access_lock) = 0;
};
