/** The documents that the API answers with, and what modules pass to each other. Only the type checker reads this file. */

type Level = "fine" | "warning" | "critical";
/** A number above 2^53 arrives as text. */
type LargeNumber = number | string;
/** ISO 8601 with `Z` or an offset. */
type Timestamp = string;

interface Session { name: string | null; role: "reader" | "operator" | null; needsLogin: boolean }

interface Service {
    name: string; host: string; port: number;
    state: "ready" | "detecting" | "paused" | "unreachable";
    version: string | null; hostName: string | null; level: Level | null; drives: number | null;
    lastAnswer: Timestamp | null; error: string | null;
}

interface Drive {
    number: number; model: string; serial: string; firmware: string; ataVersion: string;
    capacityBytes: LargeNumber; bytesPerSector: number; smartState: number; attributeCount: number;
    volumeCount: number; monitored: boolean; powerOnRaw: LargeNumber; powerOnHours?: number | null;
    level: Level | null; healthPercent: number | null; temperatureCelsius: number | null;
}

interface OverviewDrive extends Drive { temperatures: (number | null)[] }
interface OverviewService extends Service { driveList: OverviewDrive[] }

interface Attribute {
    id: number; name: string; value: number; worst: number; threshold: number; raw: LargeNumber;
    prefailure: boolean; failing: boolean;
}
interface DriveDetail extends Drive { attributes: Attribute[] }

interface Volume {
    drive: number; volume: string; label: string; fileSystem: string; serial: string;
    totalBytes: LargeNumber; freeBytes: LargeNumber;
}

interface Scan {
    drive: number; running: boolean; failed: boolean; badSectors: [LargeNumber, LargeNumber][];
    percent?: number; firstSector?: LargeNumber; currentSector?: LargeNumber; started?: Timestamp; ended?: Timestamp;
}

interface Schedule {
    drive: number; kind: "none" | "once" | "daily" | "weekly" | "unknown";
    date?: string; time?: string; weekday?: string;
}

type SettingValue = string | number | boolean;
type Settings = Record<string, SettingValue>;

interface Finding {
    model: string; serial: string; number: number | null;
    kind: "temperature" | "attribute" | "growth" | "unreadable"; severity: "warning" | "critical";
    id: number | null; name: string | null; value: number | null; threshold: number | null; raw: number | null;
    baseline: number | null; limit: number | null; since: Timestamp; acknowledged: boolean;
}
interface Channel {
    name: string; on: boolean; lastSuccess: Timestamp | null; lastFailure: Timestamp | null;
    reason: string | null; pending: number;
}
interface Alerts { supported?: boolean; policy?: string; level?: Level | null; findings?: Finding[]; channels?: Channel[] }

interface TemperaturePoint { time: Timestamp; min: number | null; mean: number | null; max: number | null }
interface AttributeChange { time: Timestamp; value: number; worst: number; raw: LargeNumber }

interface HistoryEvent {
    time: Timestamp; service: string; drive: number | null; model: string | null; serial: string | null;
    kind: "level" | "finding" | "recovered" | "appeared" | "lost" | "returned" | "scan" | "service"; text: string;
}
interface FormerDrive {
    service: string; model: string; serial: string; firstSeen: Timestamp; lastSeen: Timestamp;
    level: Level | null; healthPercent: number | null; temperatureCelsius: number | null;
}

/** A document with the time of the service's last answer, where the service no longer answers. */
interface Reply<T> { data: T; lastAnswer: Timestamp | null; isStale: boolean }

/** What a route opens. `update` runs after the store changed; `changed` names the services that did, null for any. */
interface View { title: string; element: HTMLElement; update(changed: string[] | null): void; close?(): void }

interface Dygraph { updateOptions(options: object): void; destroy(): void; resize(): void; toDomYCoord(value: number): number }
interface DygraphConstructor {
    new (host: HTMLElement, data: unknown[], options: object): Dygraph;
    PLUGINS: unknown[];
    Plugins: { Legend: unknown };
}
interface Window { Dygraph: DygraphConstructor }
