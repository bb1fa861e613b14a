// Reading the values of rows.

/** Whether two stored values are the same choice (1 and "1" are; objects never are). */
export function sameValue(a, b) {
  if (a === b) return true;
  if (a === null || a === undefined || b === null || b === undefined) return false;
  return typeof a !== 'object' && typeof b !== 'object' && String(a) === String(b);
}

/** The title a list row shows for its value (its short title if it has them; the value itself if no title matches). */
export function listTitle(row) {
  const p = row.properties;
  const values = Array.isArray(p.validValues) ? p.validValues : [];
  const titles = Array.isArray(p.validTitles) ? p.validTitles : [];
  const value = row.value ?? p.default;
  const at = values.findIndex((candidate) => sameValue(candidate, value));
  if (at >= 0) return p.shortTitles ? p.shortTitles[at] ?? titles[at] : titles[at] ?? String(values[at]);
  return value === undefined || value === null ? '' : String(value);
}

/** A number with at most two decimals ('' for NaN or infinity). */
export function formatNumber(x) {
  if (!Number.isFinite(x)) return '';
  return String(Math.round(x * 100) / 100);
}

/** A small stable hash of a text (an app's placeholder icon colour). */
export function hash(text) {
  let h = 0;
  for (const c of text || '') h = (h * 31 + c.charCodeAt(0)) >>> 0;
  return h;
}
