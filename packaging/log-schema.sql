-- Makes the log database of TarnexComm, or adds its table to a database that has none:
--
--     sqlite3 /var/lib/tarnexcomm/log.db < log-schema.sql
--
-- The user of the service needs write access to the file and to its folder. Then name the file in
-- Text1(37) of section [Text] of the settings file. Other programs may read and clear the table at
-- any time; in WAL mode neither side waits for the other.
--
-- The service addresses the columns by position: names may differ, order and number may not.

PRAGMA journal_mode = WAL;

CREATE TABLE IF NOT EXISTS "Log" (
    Number      INTEGER PRIMARY KEY AUTOINCREMENT,
    Date        TEXT,   -- yyyy-mm-dd, local time
    Time        TEXT,   -- hh:mm:ss
    Direction   TEXT,   -- Out: sent by the service; In: received
    Source      TEXT,   -- machine number and "Nex"; "Nex1" for responses
    Message     TEXT,
    Event       TEXT,   -- name of the service the message is about
    State       TEXT,   -- abnormal, normal or lost
    Action      TEXT,   -- what the system does, or what a command asks for
    SentBySMS   TEXT,   -- Yes or No for notifications, else empty
    SentByMail  TEXT,   -- Yes or No for notifications, else empty
    Machine     TEXT,   -- name of the machine, as the notification gives it
    Detail              -- notifications: free text; commands and responses: target number
);
