#pragma once

#include <bitset>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "common/AccessLock.h"
#include "common/Wwn.h"
#include "common/cim_log.h"
#include "common/export.h"
#include "common/thread_annotations.h"
#include "common/version.h"
#include "datacache/BladeState.h"
#include "datacache/ChassisState.h"
#include "datacache/DataCacheEvent.h"
#include "datacache/EvalSignal.h"
#include "datacache/FabricCache.h"
#include "datacache/Health.h"
#include "datacache/PortState.h"
#include "datacache/Snapshot.h"
#include "datacache/SwitchState.h"
#include "switchlib/NORV_Vex_Lib.h"
#include "vexlib/vexlib.h"
#include "zoning/ZoningCache.h"

namespace datacache {
class AreaPrints;
class CacheReader;
class SnapshotPublisher;
class ZoningSession;
struct EventMarks;
struct MarkReason;

/** The host's callback: called with the access lock held; see DataCacheEvent. */
using DataCacheCallback = void (*)(DataCacheEvent*);
}  // namespace datacache

/**
 * The cache of one switch and its fabric, as one object for the whole process.
 *
 * A host calls init(), then start() with its callback, once each, from one thread. From then on a thread of
 * the cache follows the switch: vexlib's notifications are queued as they come, and the evaluation thread
 * takes them up, re-reads the areas that they touch, and tells the host what changed. Nothing stops the
 * thread, and the object is never destroyed while the process lives.
 *
 * Reading: a datacache::CacheReader holds the recursive access lock for a scope and shows the cached state;
 * or bracket every use of the cache by getInstance() and releaseInstance(). Pointers that lookups return are
 * good until the release. Calls that say "takes access_lock" take it themselves as well, so a single one of
 * them needs no bracket of its own where it is called through a pointer that the host kept. A pass holds the
 * lock throughout, and a switch that answers slowly makes it long; health() and idle() wait for nothing.
 *
 * Waiting: an area whose read failed is read again at the next pass, and a pass comes only with a switch
 * event, reloadZoning(), refreshNow(), or the retry and refresh intervals, which are off unless they are set.
 * waitReady() waits for the first complete state; health() says which area is not up to date, since when and
 * why.
 */
class DC_EXPORT DataCache {
  public:
    // ---- Start-up and access ----

    /**
     * Makes the access lock and the instance and connects to the switch, trying every 10 seconds until it
     * succeeds; then loads the zoning limits. Returns true always. Call it before any other thread uses the
     * cache: it initialises the lock at every call.
     */
    static bool init();
    /** Stores the callback, registers for events, and starts the evaluation thread. Returns true always. */
    static bool start(datacache::DataCacheCallback callback);
    /** Takes the access lock and returns the instance: null before init(), and the lock is held even then. */
    static DataCache* getInstance() DC_ACQUIRE(access_lock);
    static void releaseInstance() DC_RELEASE(access_lock);

    /** The instance; created by init(). Read it through getInstance(). */
    static DataCache* instance;

    // ---- Reading and waiting ----

    /**
     * The cached state as the last pass left it, which never changes any more (datacache/Snapshot.h); null
     * while snapshots are off, and until a pass has read its first area. Takes no lock that a pass holds, so
     * it may be asked from any thread at any time, before init() and inside the callback too.
     */
    static std::shared_ptr<const datacache::Snapshot> snapshot();
    /**
     * Turns snapshots on and wakes the evaluation thread, whose pass publishes the first; or turns them off,
     * as at first, which drops the newest. They cost a copy of each area that a pass has read. From any
     * thread at any time; best before init(). Waits for no pass.
     */
    static void setSnapshots(bool on);

    /** True when the last pass found every area up to date. */
    bool isCacheReady() DC_TAKES(access_lock);
    /**
     * Wait until the last pass found every area up to date, or until idle(), at most so long; true where it
     * came to that. They take no lock. On a thread that holds the access lock, as a callback does, they
     * answer at once, since no pass could run meanwhile.
     */
    static bool waitReady(uint32_t milliseconds);
    static bool waitIdle(uint32_t milliseconds);
    /**
     * True when no switch event waits, no pass is running or asked for, and no zoning session's step and no
     * read of the accounts is under way. Readers do not count. False until the first pass is over. Waits for
     * no pass.
     */
    DC_NODISCARD static bool idle();
    /**
     * Has the cache call `callback` at the end of each pass that lost or regained readiness, in the sense of
     * isCacheReady(), with `context` handed on as it is; null turns that off. It runs on the evaluation
     * thread with the access lock held, before the update-complete event of a pass that regained it; the
     * rules for the event callback hold for it too. Takes effect at once, before init() too.
     */
    static void setReadinessCallback(void (*callback)(bool ready, void* context), void* context)
        DC_TAKES(access_lock);

    // ---- Trust ----

    /**
     * What is up to date and what is not, since when and why; what is under way; what the cache is not told;
     * and what it has no room for. Waits for no pass and for no lock but its own, so it may be asked from any
     * thread at any time, before init() and inside the callback too. Throws std::bad_alloc alone.
     */
    DC_NODISCARD static datacache::Health health();
    /**
     * Has a pass read every area and every local port anew as soon as the evaluation thread is free; zoning
     * is loaded where its checksums differ (reloadZoning() loads it in any case), an active zoneset that is
     * missing is asked for again, and the accounts wait for readAccounts(). Waits for a running pass. Before
     * init() it does nothing.
     */
    static void refreshNow() DC_TAKES(access_lock);
    /**
     * Has what is not up to date read again `seconds` after the last pass, even if no switch event comes, and
     * again after that for as long as it takes: areas, an active zoneset that is missing, the zoning limits,
     * and the registration of the event codes that the switch refused, after which everything is read anew.
     * 0, as at first, turns that off. Takes effect at once, from any thread, and before start() too.
     */
    static void setRetryInterval(uint32_t seconds);
    /**
     * Has everything that a pass reads read anew that often, so that a change whose notification was lost is
     * found; Health counts such changes. 0, as at first, turns that off. Takes effect at once, from any
     * thread, and before start() too.
     */
    static void setRefreshInterval(uint32_t seconds);
    /** Reads the accounts of the switch, which no pass does; see _getAcctInfo(). */
    bool readAccounts() DC_TAKES(access_lock);

    // ---- Editing ----

    /** Opens an editing session of the fabric's zoning for a client (zoning/ZoningSession.h); its
     * lockOutcome() says whether it is open, also before init(). */
    static datacache::ZoningSession zoningSession(std::string_view client) DC_TAKES(access_lock);

    // ---- Asking for updates ----

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

    // ---- Zoning ----

    /**
     * The zoning database itself, for hosts that edit it through ZoningCache's own calls; the reference is
     * good for as long as the instance. To read it use a snapshot or CacheReader::zoning().
     */
    ZoningCache& zoningCache();

    // ---- Accounts ----

    /**
     * Reads the accounts of the switch, which no pass does, and sends the events of those that came and went
     * since the last read, on the calling thread. False when a read failed; the list is then as it was. A
     * list that goes on after 65,536 names counts as one without an end, and its read as failed. The caller
     * holds the access lock. CacheReader::accounts() shows the list.
     */
    bool _getAcctInfo() DC_REQUIRES(access_lock);

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

    // ---- The steps of init() and start(), for a host that takes them one at a time ----

    /** init() makes the one instance, and nothing destroys it. */
    DataCache();
    virtual ~DataCache();
    DataCache(const DataCache&) = delete;
    DataCache& operator=(const DataCache&) = delete;
    /** Connects to the switch, trying every 10 seconds; returns once connected, true. */
    bool startVexlib();
    /** Stores the callback and registers for the switch's events. A switch that refuses is only logged. True.
     */
    bool startEventMonitor(datacache::DataCacheCallback callback);
    /** False when the thread could not be made. */
    bool startEvalThread();
    static void* evalThread(void*);
    /**
     * One pass: takes up the queued events, then reads what is marked. Returns isCacheReady(). Called from
     * the callback it is harmless: the event under dispatch stays with the outer pass, which alone removes
     * it, and no event is dispatched twice.
     */
    bool evaluateCaches() DC_REQUIRES(access_lock);
    /** What the switch library calls with an event, on a thread of its own; the event stays the library's. */
    static void vexlibNotificationCB(void* context, vex_event_s* event, void* user) DC_TAKES(access_lock);
    /** Appends an event, which the cache then owns and deletes, for the next pass; does not wake it. */
    void queueVexlibEvent(vex_event_s* event) DC_TAKES(access_lock);
    /** Queues an event of the host's own making; source and text (at most 1395 bytes of it) may be null. */
    void vexlibEventKick(vex_eventcode_e code, vex_eventsource_s* source, char* text) DC_TAKES(access_lock);

  private:
    friend class datacache::CacheReader;
    friend class datacache::SnapshotPublisher;
    friend class CachePeer;  // the tests' one way in

    // ---- Loaders: one area each, called by the pass ----

    int _getSwitchInfo() DC_REQUIRES(access_lock);
    int _getChassisInfo() DC_REQUIRES(access_lock);
    bool _getBladeInfo() DC_REQUIRES(access_lock);
    bool _getPortInfo() DC_REQUIRES(access_lock);
    /** The scan's part from the ports' names on: the local switch's record, then the events. */
    bool _processPort0Wwn() DC_REQUIRES(access_lock);
    bool _getFabricInfo() DC_REQUIRES(access_lock);
    bool _load_fabric_info() DC_REQUIRES(access_lock);
    bool _load_switch_domain_list() DC_REQUIRES(access_lock);
    bool _load_mserver_ports() DC_REQUIRES(access_lock);
    int _getZoningInfo() DC_REQUIRES(access_lock);

    /** Acts on one queued event. */
    void _vexlibNotificationCB(vex_event_s* event) DC_REQUIRES(access_lock);

    static const char* _tagToString(int code);
    static HardwareStatus _smlConvToHardwareStatus(char* state);
    static std::vector<std::string> _parseSMLList(std::string list);
    static bool _fabricContainsWWN(std::vector<Wwn> names, Wwn name);
    static std::string _sanitizedMediaVendorSN(const char* text);

    /** An area's flags, loader and texts. */
    struct AreaRow;
    DC_HIDDEN static const AreaRow& _rowOf(datacache::CacheArea area);

    DC_HIDDEN void _drainEventQueue() DC_REQUIRES(access_lock);
    DC_HIDDEN void _updateAreas() DC_REQUIRES(access_lock);
    /** Reads an area and writes what came of it into its flags and its record; one that failed stays marked.
     */
    DC_HIDDEN void _readArea(datacache::CacheArea area) DC_REQUIRES(access_lock);
    /** Marks an area in its flag and its record. */
    DC_HIDDEN void _markArea(datacache::CacheArea area, const datacache::MarkReason& reason)
        DC_REQUIRES(access_lock);
    /** Marks what a pass reads, with every local port. */
    DC_HIDDEN void _markAll(const datacache::MarkReason& reason) DC_REQUIRES(access_lock);
    /** Marks what a switch event says has changed. */
    DC_HIDDEN void _markFor(const vex_event_s& event, const datacache::EventMarks& marks)
        DC_REQUIRES(access_lock);
    /** Compares what an area's good read found with the read before, for Health. */
    DC_HIDDEN void _compareArea(datacache::CacheArea area, const std::bitset<datacache::kPortRows>& portsRead)
        DC_REQUIRES(access_lock);
    DC_HIDDEN void _reportPorts(const Wwn& fabric) DC_REQUIRES(access_lock);
    DC_HIDDEN bool _readLimits() DC_TAKES(access_lock);
    /** What the retry interval does before its pass; false where nothing is to be mended. */
    DC_HIDDEN bool _prepareRetry() DC_TAKES(access_lock);

    // ---- State ----

    ZoningCache _zoningCache;
    uint32_t _handle = 0;  ///< connection handle; written before there are threads
    datacache::DataCacheCallback _callback DC_GUARDED_BY(access_lock) = nullptr;
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

    std::bitset<datacache::kPortRows> _localPortRefresh
        DC_GUARDED_BY(access_lock);  ///< ports that the next scan reads
    datacache::PortState _portState DC_GUARDED_BY(access_lock);
    datacache::PortState _prevPortState DC_GUARDED_BY(access_lock);
    datacache::TransceiverState _transceivers DC_GUARDED_BY(access_lock);

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

    /** Entries at the front of the queue whose dispatch is going on; more than 1 where a callback runs a
     * pass.
     */
    size_t _dispatching DC_GUARDED_BY(access_lock) = 0;
    std::unique_ptr<datacache::AreaPrints> _prints DC_PT_GUARDED_BY(access_lock);
};
