/* Databases of Microsoft Access (MDB of Access 97, and of Access 2000 to 2003), read and written without Access.
 *
 * All texts are UTF-8. What can fail returns 0, or the number of the error that Access programmers know (3078: no such
 * table); `error`, which may be NULL, then says it in words. Handles are opaque: what opens one is paired with what
 * closes it. A handle belongs to one thread at a time.
 */
#ifndef VELMORA_JET_H
#define VELMORA_JET_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__) && !defined(_WIN32)
#define VJET_API __attribute__((visibility("default")))
#else
#define VJET_API
#endif

typedef struct vjet_database vjet_database;
typedef struct vjet_table vjet_table;

typedef struct vjet_error {
    int number; /* 0: none */
    char text[508];
} vjet_error;

enum { VJET_OUT_OF_MEMORY = 7, VJET_BAD_ARGUMENT = 5, VJET_OTHER_ERROR = 1 };

enum vjet_format { VJET_ACCESS_97 = 3, VJET_ACCESS_2000 = 4 };

/* The numbers are those of the file. */
enum vjet_type {
    VJET_NO_TYPE = 0,
    VJET_BOOLEAN = 1,
    VJET_BYTE = 2,
    VJET_INTEGER = 3, /* 16 bits */
    VJET_LONG = 4,    /* 32 bits */
    VJET_CURRENCY = 5,
    VJET_SINGLE = 6,
    VJET_DOUBLE = 7,
    VJET_DATE = 8,
    VJET_BINARY = 9,
    VJET_TEXT = 10,
    VJET_OLE = 11,
    VJET_MEMO = 12,
    VJET_GUID = 15,
    VJET_NUMERIC = 16
};

/* The version of the library, such as "1.2.0". */
VJET_API const char* vjet_version(void);

/* --- Databases -------------------------------------------------------------------------------------------------- */

/* Makes an empty database; there must be no file at `path` yet. The file appears with the first vjet_commit. */
VJET_API int vjet_create(const char* path, enum vjet_format format, vjet_database** database, vjet_error* error);
/* Opens a database, which nobody else can open meanwhile. */
VJET_API int vjet_open(const char* path, vjet_database** database, vjet_error* error);
/* Opens it for reading, beside others who only read; nothing is written, neither to it nor beside it. */
VJET_API int vjet_open_read_only(const char* path, vjet_database** database, vjet_error* error);
/* Makes all that was done since the last commit last, as one unit: after a crash it is all there, or nothing of it. */
VJET_API int vjet_commit(vjet_database* database, vjet_error* error);
/* Drops what was not committed. Its tables must be closed. NULL is allowed. */
VJET_API void vjet_close(vjet_database* database);

/* Runs one statement: CREATE TABLE, CREATE INDEX, ALTER TABLE, DROP TABLE, DROP INDEX, DELETE * FROM t, UPDATE t SET
 * a = b. One that fails has changed nothing. */
VJET_API int vjet_execute(vjet_database* database, const char* sql, vjet_error* error);

/* Counts the tables, without those of the system; their names, from 0, are read by vjet_table_name. */
VJET_API int vjet_count_tables(vjet_database* database, size_t* count, vjet_error* error);
/* NULL behind the last one. As of the last count, and valid until the next one. */
VJET_API const char* vjet_table_name(const vjet_database* database, size_t index);

/* --- Tables: their columns, counted from 0 ------------------------------------------------------------------------ */

VJET_API int vjet_open_table(vjet_database* database, const char* name, vjet_table** table, vjet_error* error);
/* A record that was begun and not saved is dropped. NULL is allowed. */
VJET_API void vjet_close_table(vjet_table* table);

VJET_API size_t vjet_column_count(const vjet_table* table);
/* NULL behind the last column; valid until the table's columns are changed. */
VJET_API const char* vjet_column_name(const vjet_table* table, size_t column);
VJET_API enum vjet_type vjet_column_type(const vjet_table* table, size_t column);
/* 1 when the column numbers its records itself. */
VJET_API int vjet_is_autonumber(const vjet_table* table, size_t column);
/* The column of exactly this name; vjet_column_count when there is none. */
VJET_API size_t vjet_find_column(const vjet_table* table, const char* name);

/* --- Rows --------------------------------------------------------------------------------------------------------- */

/* Goes to the first row, and then from one to the next: *found is 0 behind the last one. */
VJET_API int vjet_next(vjet_table* table, int* found, vjet_error* error);
/* The next vjet_next goes to the first row again. */
VJET_API void vjet_rewind(vjet_table* table);

/* Values of the current row. A text or bytes stay valid until the next call with this table; NULL and a size of 0 stand
 * for Null. Any type can be read as a text, with a 0 behind it; numbers as they are shortest, dates like
 * "2024-03-05 14:07:09", bytes as hexadecimal digits. */
VJET_API int vjet_is_null(vjet_table* table, size_t column, int* is_null, vjet_error* error);
VJET_API int vjet_text(vjet_table* table, size_t column, const char** text, size_t* size, vjet_error* error);
/* Of a type that holds numbers, booleans (0 or 1) or dates (days since 1899-12-30); 0 for Null. */
VJET_API int vjet_number(vjet_table* table, size_t column, double* number, vjet_error* error);
/* Of VJET_BINARY and VJET_OLE. */
VJET_API int vjet_bytes(vjet_table* table, size_t column, const void** bytes, size_t* size, vjet_error* error);

/* --- Changes ------------------------------------------------------------------------------------------------------ */

/* Begins a new record. Without it, the values that are set are the current row's. */
VJET_API int vjet_add(vjet_table* table, vjet_error* error);
VJET_API int vjet_set_null(vjet_table* table, size_t column, vjet_error* error);
/* A text, turned into the column's type. */
VJET_API int vjet_set_text(vjet_table* table, size_t column, const char* text, size_t size, vjet_error* error);
VJET_API int vjet_set_number(vjet_table* table, size_t column, double number, vjet_error* error);
VJET_API int vjet_set_bytes(vjet_table* table, size_t column, const void* bytes, size_t size, vjet_error* error);
/* Saves the record, new or changed. One that is refused can be corrected and saved again, or dropped. */
VJET_API int vjet_save(vjet_table* table, vjet_error* error);
VJET_API void vjet_drop(vjet_table* table);
/* Deletes the current row. */
VJET_API int vjet_delete(vjet_table* table, vjet_error* error);
/* The number that the record last saved was given; 0 when there is none. */
VJET_API int32_t vjet_last_autonumber(const vjet_table* table);

#ifdef __cplusplus
}
#endif

#endif
