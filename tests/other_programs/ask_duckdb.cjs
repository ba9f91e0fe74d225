// Asks DuckDB the questions of entries.sql in a page of the documentation, and whether its answers are right for the series in
// logs/work.* of HostileSeriesTest. Exit status 77 where the package is not installed.
//
// Usage: ask_duckdb.cjs PAGE
'use strict';
const assert = require('node:assert');
const { execFileSync } = require('node:child_process');
const fs = require('node:fs');
const path = require('node:path');

const kPackage = '@duckdb/node-api';

function loadDuckDb() {
  const places = [kPackage];
  try {
    places.push(path.join(execFileSync('npm', ['root', '-g'], { encoding: 'utf8', stdio: ['ignore', 'pipe', 'ignore'] }).trim(), kPackage));
  } catch {
    // Without npm there is no folder of packages for all users.
  }
  for (const place of places) {
    try {
      return require(place);
    } catch (error) {
      if (error.code !== 'MODULE_NOT_FOUND') throw error;
    }
  }
  process.exit(77);
}

function statementsOf(page) {
  const block = /<!-- file: entries\.sql -->\n```sql\n(.*?)```/s.exec(fs.readFileSync(page, 'utf8'));
  return block[1].split(/;\n/).map((text) => text.trim()).filter((text) => text !== '');
}

async function main() {
  const { DuckDBInstance } = loadDuckDb();
  const [makeView, ask, askForGaps] = statementsOf(process.argv[2]);
  const connection = await (await DuckDBInstance.create(':memory:')).connect();
  const rows = async (sql) => (await connection.runAndReadAll(sql)).getRowsJson();

  await connection.run(makeView);
  const [[count, different, sum, timed]] = await rows(
    `SELECT count(*), count(DISTINCT attributes ->> '$.Number'), sum((attributes ->> '$.Number')::BIGINT), count(time) FROM entries`);
  assert.ok(count > 100);
  assert.equal(different, count);
  assert.equal(Number(sum), count * (count - 1) / 2);
  assert.equal(timed, count - Math.ceil(count / 3));

  const answers = await rows(ask);
  assert.deepEqual(answers.map((row) => Number(row[1])), [0, 1, 2, 3, 4, 5, 6, 7, 8, 9]);
  assert.ok(answers.every((row) => row[0] === 'EV"ENT\\ä'));
  assert.equal(answers.reduce((total, row) => total + Number(row[2]), 0), Number(count));
  assert.deepEqual(await rows(askForGaps), []);
}

main().catch((error) => {
  console.log(error);
  process.exit(1);
});
