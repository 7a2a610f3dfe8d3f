#pragma once

namespace vorlane::service {

class SQLiteDatabase;

/// Creates or upgrades the tables of the service. Throws ServiceError, also for a database of another program.
void prepareSchema(SQLiteDatabase& database);

}  // namespace vorlane::service
