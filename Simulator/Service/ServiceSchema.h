#pragma once

namespace vorlane::service {

class SQLiteDatabase;

/// Makes the service's tables in a new database, or those that are missing in one of an older version. Throws
/// ServiceError, also for a database that is not the service's.
void prepareSchema(SQLiteDatabase& database);

}  // namespace vorlane::service
