// Checks requests of OTLP logs with OpenTelemetry's own package: node check_requests.js FOLDER
//
// FOLDER has NUMBER.json and NUMBER.pb, the same records in both forms. With reference.jsonl beside them, a line for each
// record of each NUMBER, what the package's exporter makes of the same values has to be the same, field by field. The
// package is looked for in NODE_PATH.
'use strict';
const assert = require('assert');
const fs = require('fs');
const path = require('path');

const transformer = require('@opentelemetry/otlp-transformer');
const {resourceFromAttributes} = require('@opentelemetry/resources');
const root = require(path.join(path.dirname(require.resolve('@opentelemetry/otlp-transformer')), 'generated', 'root.js'));
const Request = root.opentelemetry.proto.collector.logs.v1.ExportLogsServiceRequest;

const kDetails = {longs: String, enums: Number, bytes: String};

// OTLP's JSON has hexadecimal digits where that of protobuf has base64.
function withBase64Ids(request) {
  for (const resource of request.resourceLogs) {
    for (const scope of resource.scopeLogs) {
      for (const record of scope.logRecords) {
        for (const id of ['traceId', 'spanId']) {
          if (record[id] !== undefined) record[id] = Buffer.from(record[id], 'hex').toString('base64');
        }
      }
    }
  }
  return request;
}

// NaN is the text "NaN" in JSON, which fromObject() makes a number of; toObject() leaves it one.
function message(object) {
  const problem = Request.verify(Request.fromObject(object));
  assert.strictEqual(problem, null);
  return Request.fromObject(object);
}

// Nothing stands there that the messages do not have.
function expectNothingUnknown(ours, theirs, where) {
  if (typeof ours !== 'object' || ours === null) return;
  for (const key of Object.keys(ours)) {
    assert.ok(theirs !== undefined && theirs !== null && key in theirs, `${where}.${key} is unknown`);
    expectNothingUnknown(ours[key], theirs[key], `${where}.${key}`);
  }
}

function records(object) {
  return object.resourceLogs.flatMap(resource => resource.scopeLogs.flatMap(scope => scope.logRecords));
}

function withoutObserved(object) {
  for (const record of records(object)) {
    assert.match(record.observedTimeUnixNano, /^[1-9][0-9]{18}$/);
    delete record.observedTimeUnixNano;
  }
  return object;
}

function checkForms(folder, number) {
  const text = fs.readFileSync(path.join(folder, `${number}.json`), 'utf8');
  const json = withBase64Ids(JSON.parse(text));
  const fromJson = Request.toObject(message(json), kDetails);
  expectNothingUnknown(json, fromJson, 'request');
  const bytes = fs.readFileSync(path.join(folder, `${number}.pb`));
  const decoded = Request.decode(bytes);
  // Its encoder writes the same bytes.
  assert.deepStrictEqual(Buffer.from(Request.encode(decoded).finish()).equals(bytes), true, `${number}.pb`);
  const fromProtobuf = Request.toObject(decoded, kDetails);
  assert.deepStrictEqual(withoutObserved(fromJson), withoutObserved(fromProtobuf));
  return fromProtobuf;
}

// What somebody who uses the package's exporter would give it for a line of reference.jsonl.
function readable(line) {
  const nanoseconds = BigInt(line.nanoseconds);
  return {
    hrTime: [Number(nanoseconds / 1000000000n), Number(nanoseconds % 1000000000n)],
    hrTimeObserved: [0, 0],
    severityNumber: line.severityNumber,
    severityText: line.severityText,
    eventName: line.eventName,
    body: line.body,
    attributes: line.attributes,
    droppedAttributesCount: 0,
    spanContext: {traceId: line.traceId, spanId: line.spanId},
    instrumentationScope: line.scope,
    resource: line.resource,
  };
}

// Ours leaves out what is 0, and writes int64 as texts.
function likeOurs(value) {
  if (Array.isArray(value)) return value.map(likeOurs);
  if (typeof value !== 'object' || value === null) return value;
  const out = {};
  for (const [key, member] of Object.entries(value)) {
    if (key === 'droppedAttributesCount' && member === 0) continue;
    if (key === 'observedTimeUnixNano' || member === undefined || (key === 'schemaUrl' && member === '')) continue;
    out[key] = key === 'intValue' ? String(member) : likeOurs(member);
  }
  return out;
}

function checkReference(folder, number, lines) {
  const resource = resourceFromAttributes(lines[0].resource);
  const made = lines.map(line => readable({...line, resource}));
  const bytes = transformer.JsonLogsSerializer.serializeRequest(made);
  const theirs = likeOurs(JSON.parse(Buffer.from(bytes).toString('utf8')));
  const ours = likeOurs(JSON.parse(fs.readFileSync(path.join(folder, `${number}.json`), 'utf8')));
  assert.deepStrictEqual(ours, theirs);
}

function main(folder) {
  const numbers = fs.readdirSync(folder).filter(name => name.endsWith('.pb')).map(name => name.slice(0, -3));
  let count = 0;
  for (const number of numbers) count += records(checkForms(folder, number)).length;
  const reference = path.join(folder, 'reference.jsonl');
  let compared = 0;
  if (fs.existsSync(reference)) {
    const lines = fs.readFileSync(reference, 'utf8').trim().split('\n').map(line => JSON.parse(line));
    for (const number of numbers) checkReference(folder, number, lines.filter(line => String(line.request) === number));
    compared = lines.length;
  }
  console.log(`${count} records, ${compared} compared with the exporter's`);
}

main(process.argv[2]);
