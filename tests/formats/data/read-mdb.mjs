// Shows the tables of an Access file as npm's mdb-reader reads them. Arguments: the folder of the package, the file.
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { pathToFileURL } from "node:url";

const [folder, file] = process.argv.slice(2);
const library = createRequire(folder + "/").resolve("mdb-reader");
const { default: MDBReader } = await import(pathToFileURL(library));

function shown(value, type) {
  if (value === null) return "-";
  if (value instanceof Date) return value.toISOString().slice(0, 19).replace("T", " ").replace(" 00:00:00", "");
  if (Buffer.isBuffer(value)) return value.toString("hex");
  if (type === "repid") return "{" + value.toUpperCase() + "}";
  if (type === "boolean") return value ? "True" : "False";
  return String(value);
}

const reader = new MDBReader(readFileSync(file));
for (const name of reader.getTableNames().sort()) {
  const table = reader.getTable(name);
  const columns = table.getColumns();
  const heads = columns.map((column) => (column.type === "numeric" ? `${column.name}(${column.precision},${column.scale})` : column.name));
  console.log(`${name}: ${heads.join("|")}`);
  for (const row of table.getData()) console.log(columns.map((column) => shown(row[column.name], column.type)).join("|"));
}
