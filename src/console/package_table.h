#pragma once

class PackageDb;

/// Writes one row for each record, in database order, to standard output. A quiet run shows it too.
void printPackageTable(const PackageDb& db);
