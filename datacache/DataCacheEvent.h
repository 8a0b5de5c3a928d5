#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/Wwn.h"
#include "common/export.h"

/**
 * What the cache tells its host.
 *
 * Each change is an object of one of the 27 classes below, handed to the host's callback by pointer. The
 * object is the sender's and dies when the callback returns: copy what you keep, delete nothing. The callback
 * runs with the access lock held, on the evaluation thread (account events: on the thread that read the
 * accounts). It may read the cache; it must not throw, and must not wait for another thread that needs the
 * cache.
 *
 * Tell the kind by `type`, each class's TYPE (9, 13 to 15, 18 and 24 belong to no class), or by the class.
 * Status lists hold CIM OperationalStatus values (DMTF CIM schema, CIM_ManagedSystemElement) and this
 * system's own 32768 (power-on self test failed) and 32769 (management processor access fault).
 */
class DC_EXPORT DataCacheEvent {
  public:
    explicit DataCacheEvent(int32_t typeCode, const Wwn& name = Wwn()) : type(typeCode), wwn(name) {}
    virtual ~DataCacheEvent();

    int32_t type;  ///< type code
    Wwn wwn;       ///< whom the event is about; see each class
};

/** A fabric exists now. `wwn`: the fabric. */
class DC_EXPORT DCEventFabricAdd : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 1;
    explicit DCEventFabricAdd(const Wwn& name) : DataCacheEvent(TYPE, name) {}
    ~DCEventFabricAdd() override;
};

/** A fabric no longer exists. `wwn`: the fabric. */
class DC_EXPORT DCEventFabricRemove : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 2;
    explicit DCEventFabricRemove(const Wwn& name) : DataCacheEvent(TYPE, name) {}
    ~DCEventFabricRemove() override;
};

/** A fabric gained or lost switches. `wwn`: the fabric. */
class DC_EXPORT DCEventFabricChange : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 3;
    DCEventFabricChange(const Wwn& name, bool gained) : DataCacheEvent(TYPE, name), grown(gained) {}
    ~DCEventFabricChange() override;

    bool grown;  ///< switches joined or a fabric merged in; otherwise switches left or the fabric segmented
};

/** A switch joined a fabric. `wwn`: the fabric. */
class DC_EXPORT DCEventSwitchAdd : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 4;
    DCEventSwitchAdd(const Wwn& name, const Wwn& switchName)
        : DataCacheEvent(TYPE, name), switchWwn(switchName) {}
    ~DCEventSwitchAdd() override;

    Wwn switchWwn;  ///< the switch
};

/** A switch left a fabric. `wwn`: the fabric. */
class DC_EXPORT DCEventSwitchRemove : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 5;
    DCEventSwitchRemove(const Wwn& name, const Wwn& switchName)
        : DataCacheEvent(TYPE, name), switchWwn(switchName) {}
    ~DCEventSwitchRemove() override;

    Wwn switchWwn;  ///< the switch
};

/** The local switch's operational status changed. `wwn`: the local switch. */
class DC_EXPORT DCEventSwitchStatusChange : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 6;
    DCEventSwitchStatusChange(const Wwn& name, const Wwn& principal,
                              const std::vector<unsigned short>& previous,
                              const std::vector<unsigned short>& current)
        : DataCacheEvent(TYPE, name),
          principalWwn(principal),
          previousStatus(previous),
          currentStatus(current) {}
    ~DCEventSwitchStatusChange() override;

    Wwn principalWwn;                            ///< the fabric's principal switch
    std::vector<unsigned short> previousStatus;  ///< CIM OperationalStatus before
    std::vector<unsigned short> currentStatus;   ///< CIM OperationalStatus now
};

/** An I/O blade appeared. `wwn`: the local switch. */
class DC_EXPORT DCEventBladeAdd : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 7;
    DCEventBladeAdd(const Wwn& name, uint16_t position) : DataCacheEvent(TYPE, name), index(position) {}
    ~DCEventBladeAdd() override;

    uint16_t index;  ///< slot, from 0
};

/** An I/O blade disappeared. `wwn`: the local switch. */
class DC_EXPORT DCEventBladeRemove : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 8;
    DCEventBladeRemove(const Wwn& name, uint16_t position) : DataCacheEvent(TYPE, name), index(position) {}
    ~DCEventBladeRemove() override;

    uint16_t index;  ///< slot, from 0
};

/** A port appeared. `wwn`: the local switch, or the fabric for a port that the name server reported. */
class DC_EXPORT DCEventPortAdd : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 10;
    DCEventPortAdd(const Wwn& name, const Wwn& port, bool nameServer)
        : DataCacheEvent(TYPE, name), portWwn(port), fromNameServer(nameServer) {}
    ~DCEventPortAdd() override;

    Wwn portWwn;          ///< the port
    bool fromNameServer;  ///< reported by the fabric's name server, not by the local port scan
};

/** A port disappeared from the fabric's name server. `wwn`: the fabric. */
class DC_EXPORT DCEventPortRemove : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 11;
    DCEventPortRemove(const Wwn& name, const Wwn& port, bool nameServer)
        : DataCacheEvent(TYPE, name), portWwn(port), fromNameServer(nameServer) {}
    ~DCEventPortRemove() override;

    Wwn portWwn;          ///< the port
    bool fromNameServer;  ///< always true
};

/** A local port's operational status changed. `wwn`: the local switch. */
class DC_EXPORT DCEventPortStatusChange : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 12;
    DCEventPortStatusChange(const Wwn& name, const Wwn& port, const Wwn& fabric,
                            const std::vector<unsigned short>& previous,
                            const std::vector<unsigned short>& current)
        : DataCacheEvent(TYPE, name),
          portWwn(port),
          fabricWwn(fabric),
          previousStatus(previous),
          currentStatus(current) {}
    ~DCEventPortStatusChange() override;

    Wwn portWwn;                                 ///< the port
    Wwn fabricWwn;                               ///< the fabric
    std::vector<unsigned short> previousStatus;  ///< CIM OperationalStatus before, one value
    std::vector<unsigned short> currentStatus;   ///< CIM OperationalStatus now, one value
};

/** A fan appeared in a slot. `wwn`: the local switch. */
class DC_EXPORT DCEventFanAdd : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 16;
    DCEventFanAdd(const Wwn& name, uint16_t position) : DataCacheEvent(TYPE, name), index(position) {}
    ~DCEventFanAdd() override;

    uint16_t index;  ///< slot, from 0
};

/** A fan disappeared from a slot. `wwn`: the local switch. */
class DC_EXPORT DCEventFanRemove : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 17;
    DCEventFanRemove(const Wwn& name, uint16_t position, uint16_t present)
        : DataCacheEvent(TYPE, name), index(position), count(present) {}
    ~DCEventFanRemove() override;

    uint16_t index;  ///< slot, from 0
    uint16_t count;  ///< fans present now
};

/** A power supply was put in. `wwn`: the local switch. */
class DC_EXPORT DCEventPowerSupplyAdd : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 19;
    DCEventPowerSupplyAdd(const Wwn& name, uint16_t position) : DataCacheEvent(TYPE, name), index(position) {}
    ~DCEventPowerSupplyAdd() override;

    uint16_t index;  ///< chassis supply, from 1, or slot, from 0
};

/** A power supply was pulled. `wwn`: the local switch. */
class DC_EXPORT DCEventPowerSupplyRemove : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 20;
    DCEventPowerSupplyRemove(const Wwn& name, uint16_t position, uint16_t present)
        : DataCacheEvent(TYPE, name), index(position), count(present) {}
    ~DCEventPowerSupplyRemove() override;

    uint16_t index;  ///< chassis supply, from 1, or slot, from 0
    uint16_t count;  ///< chassis: good supplies now; slots: supplies present now
};

/** A chassis power supply went bad. `wwn`: the local switch. */
class DC_EXPORT DCEventPowerSupplyFail : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 21;
    DCEventPowerSupplyFail(const Wwn& name, uint16_t position, uint16_t present)
        : DataCacheEvent(TYPE, name), index(position), count(present) {}
    ~DCEventPowerSupplyFail() override;

    uint16_t index;  ///< chassis supply, from 1
    uint16_t count;  ///< good supplies now
};

/** A CPU blade appeared. `wwn`: the local switch. */
class DC_EXPORT DCEventCPUAdd : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 22;
    DCEventCPUAdd(const Wwn& name, uint16_t position) : DataCacheEvent(TYPE, name), index(position) {}
    ~DCEventCPUAdd() override;

    uint16_t index;  ///< slot, from 0
};

/** A CPU blade disappeared. `wwn`: the local switch. */
class DC_EXPORT DCEventCPURemove : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 23;
    DCEventCPURemove(const Wwn& name, uint16_t position) : DataCacheEvent(TYPE, name), index(position) {}
    ~DCEventCPURemove() override;

    uint16_t index;  ///< slot, from 0
};

/** A user account was added. `wwn`: the local switch. */
class DC_EXPORT DCEventUserAcctAdd : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 25;
    DCEventUserAcctAdd(const Wwn& name, const std::string& user)
        : DataCacheEvent(TYPE, name), userName(user) {}
    ~DCEventUserAcctAdd() override;

    std::string userName;  ///< the account
};

/** A user account was removed. `wwn`: the local switch. */
class DC_EXPORT DCEventUserAcctRemove : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 26;
    DCEventUserAcctRemove(const Wwn& name, const std::string& user)
        : DataCacheEvent(TYPE, name), userName(user) {}
    ~DCEventUserAcctRemove() override;

    std::string userName;  ///< the account
};

/** Another zoneset is active, or none, or the active one changed. `wwn`: the principal switch. */
class DC_EXPORT DCEventActiveZonesetChange : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 27;
    DCEventActiveZonesetChange(const Wwn& name, const std::string& previous, const std::string& current)
        : DataCacheEvent(TYPE, name), previousActiveZoneset(previous), activeZoneset(current) {}
    ~DCEventActiveZonesetChange() override;

    std::string previousActiveZoneset;  ///< name before; empty for none
    std::string activeZoneset;          ///< name now; empty for none
};

/** The configured zoning was loaded anew. `wwn`: the local switch. */
class DC_EXPORT DCEventZoningDBChange : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 28;
    explicit DCEventZoningDBChange(const Wwn& name) : DataCacheEvent(TYPE, name) {}
    ~DCEventZoningDBChange() override;
};

/** An account's password was changed. `wwn`: the local switch. */
class DC_EXPORT DCEventUserPasswdChg : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 29;
    DCEventUserPasswdChg(const Wwn& name, const std::string& user)
        : DataCacheEvent(TYPE, name), userName(user) {}
    ~DCEventUserPasswdChg() override;

    std::string userName;  ///< the account, as the switch told it
};

/** A login failed. `wwn`: the local switch. */
class DC_EXPORT DCEventUserLoginFailure : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 30;
    DCEventUserLoginFailure(const Wwn& name, const std::string& user)
        : DataCacheEvent(TYPE, name), userName(user) {}
    ~DCEventUserLoginFailure() override;

    std::string userName;  ///< the account, as the switch told it
};

/** An environmental alarm. `wwn`: the local switch. */
class DC_EXPORT DCEventEnvEvent : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 31;
    DCEventEnvEvent(const Wwn& name, const std::string& part, const std::string& state,
                    const std::string& text)
        : DataCacheEvent(TYPE, name), component(part), condition(state), description(text) {}
    ~DCEventEnvEvent() override;

    std::string component;    ///< "temperature" or "power supply"
    std::string condition;    ///< "overtemp", "voltage high" or "voltage low"
    std::string description;  ///< the sensor, or "unknown"
};

/** The switch's CIM configuration changed. `wwn` means nothing here. */
class DC_EXPORT DCEventCIMChange : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 32;
    DCEventCIMChange() : DataCacheEvent(TYPE) {}
    ~DCEventCIMChange() override;
};

/** A pass ended with every area up to date. `wwn` means nothing here. */
class DC_EXPORT DCEventDataCacheUpdateComplete : public DataCacheEvent {
  public:
    static constexpr int32_t TYPE = 33;
    DCEventDataCacheUpdateComplete() : DataCacheEvent(TYPE) {}
    ~DCEventDataCacheUpdateComplete() override;
};
