#pragma once

namespace vorlane::service {

class SQLiteDatabase;

/// Makes the service's tables in a new database, and those that an older one does not have yet. Throws ServiceError,
/// also for a database that is not the service's.
void prepareSchema(SQLiteDatabase& database);

}  // namespace vorlane::service
