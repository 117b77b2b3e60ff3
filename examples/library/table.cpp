// Makes a database with one table, adds two records, and reads them again.
// usage: table FILE.mdb

#include <velmora_jet.hpp>

#include <iostream>
#include <utility>

int main(int argc, char* argv[])
{
    if (argc != 2)
        return 2;
    try {
        auto database = velmora_jet::Database::Create(argv[1]);
        database.Execute("CREATE TABLE peak (id COUNTER, name TEXT(40), height DOUBLE)");
        auto peaks = database.OpenTable("peak");

        for (const auto& [name, height] : {std::pair("Säntis", 2501.9), std::pair("Zugspitze", 2962.1)}) {
            peaks.Add();
            peaks.Set(1, name);
            peaks.Set(2, height);
            peaks.Save();
        }
        database.Commit();

        peaks.Rewind();
        while (peaks.Next()) {
            for (std::size_t column = 0; column < peaks.ColumnCount(); ++column)
                std::cout << (column == 0 ? "" : ", ") << peaks.Text(column).value_or("(Null)");
            std::cout << '\n';
        }
        return 0;
    } catch (const velmora_jet::Error& error) {
        std::cerr << "error " << error.Number() << ": " << error.what() << '\n';
        return 1;
    }
}
