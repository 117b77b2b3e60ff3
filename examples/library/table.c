/* Makes a database with one table, adds two records, and reads them again.
 * usage: table FILE.mdb */

#include <velmora_jet.h>

#include <stdio.h>
#include <string.h>

static int give_up(const vjet_error* error)
{
    fprintf(stderr, "error %d: %s\n", error->number, error->text);
    return 1;
}

int main(int argc, char* argv[])
{
    static const struct {
        const char* name;
        double height;
    } peaks[] = {{"Säntis", 2501.9}, {"Zugspitze", 2962.1}};
    vjet_error error;
    vjet_database* database = NULL;
    vjet_table* table = NULL;
    int found = 0;

    if (argc != 2)
        return 2;
    if (vjet_create(argv[1], VJET_ACCESS_2000, &database, &error) ||
        vjet_execute(database, "CREATE TABLE peak (id COUNTER, name TEXT(40), height DOUBLE)", &error) ||
        vjet_open_table(database, "peak", &table, &error))
        return give_up(&error);

    for (size_t i = 0; i < sizeof peaks / sizeof *peaks; ++i)
        if (vjet_add(table, &error) || vjet_set_text(table, 1, peaks[i].name, strlen(peaks[i].name), &error) ||
            vjet_set_number(table, 2, peaks[i].height, &error) || vjet_save(table, &error))
            return give_up(&error);
    if (vjet_commit(database, &error))
        return give_up(&error);

    vjet_rewind(table);
    while (vjet_next(table, &found, &error) == 0 && found) {
        for (size_t column = 0; column < vjet_column_count(table); ++column) {
            const char* text = NULL;
            if (vjet_text(table, column, &text, NULL, &error))
                return give_up(&error);
            printf("%s%s", column ? ", " : "", text ? text : "(Null)");
        }
        printf("\n");
    }
    vjet_close_table(table);
    vjet_close(database);
    return error.number ? give_up(&error) : 0;
}
