#pragma once

#include <memory>

#include "data/connection.h"
#include "data/recordset.h"
#include "data/rows/session.h"
#include "platform/system.h"

namespace pxscheduler {

// A connection that finds out at Open how its data source is reached: a data source that begins
// with "sqlite:" by `openers.embedded`, any other one by the platform's data objects where they and
// the connection string's provider are installed, else by `openers.sql_server`. The environment
// variable PXSCHEDULER_DATA_ACCESS may insist on the data objects ("ado") or do without them
// ("odbc").
//
// Raises InvalidProcedureCall (5), naming the variable, where that holds anything else. A result
// set that is opened on a connection whose data objects could not be made raises CannotCreateObject
// (429).
std::unique_ptr<Connection> NewWindowsConnection(const System& system, SessionOpeners openers);

// A result set for connections of NewWindowsConnection, made of what the connection is made of.
std::unique_ptr<Recordset> NewWindowsRecordset();

}  // namespace pxscheduler
