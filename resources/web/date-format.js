// Date format patterns as the customisation code's date formatter reads them: Unicode (ICU) date
// field symbols ("h:mm", "EEE d MMM", "'Week' w"), words in single quotes ('' is a quote), and
// every other character as it is. A letter outside quotes that is no field symbol makes the
// pattern invalid: the formatter then shows nothing. Names (months, weekdays, eras, day periods,
// time zones) come in the language of the person's system, as on the device.

/** The letters that are date field symbols; any other ASCII letter outside quotes is an error. */
const FIELDS = 'GyYuUrQqMLwWdDFgEecabBhHKkjmsSAzZOvVXx';
/** Letters that only date templates know ("j" picks 12 or 24 hours there), never a pattern. */
const TEMPLATE_ONLY = 'jJC';

/** Why a pattern cannot be used, in the person's words. */
export class DateFormatError extends Error {}

/**
 * The pattern split into fields ({field, count}) and literal text ({text}). Throws DateFormatError
 * for a letter that is no field symbol or a quote left open.
 */
export function parsePattern(pattern) {
  const parts = [];
  const text = (value) => {
    const last = parts[parts.length - 1];
    if (last && last.text !== undefined) last.text += value;
    else parts.push({ text: value });
  };
  for (let i = 0; i < pattern.length; ) {
    const c = pattern[i];
    if (c === "'") {
      if (pattern[i + 1] === "'") {
        text("'");
        i += 2;
        continue;
      }
      let literal = '';
      let at = i + 1;
      // Inside quotes, '' is one quote.
      for (;;) {
        const close = pattern.indexOf("'", at);
        if (close < 0) throw new DateFormatError('a quote is opened and never closed');
        literal += pattern.slice(at, close);
        if (pattern[close + 1] !== "'") {
          at = close + 1;
          break;
        }
        literal += "'";
        at = close + 2;
      }
      text(literal);
      i = at;
      continue;
    }
    if (/[A-Za-z]/.test(c)) {
      if (!FIELDS.includes(c) || TEMPLATE_ONLY.includes(c)) {
        throw new DateFormatError(`\u201c${c}\u201d is not a date format letter`);
      }
      let count = 1;
      while (pattern[i + count] === c) count++;
      parts.push({ field: c, count });
      i += count;
      continue;
    }
    text(c);
    i++;
  }
  return parts;
}

const pad = (value, width) => String(value).padStart(width, '0');

function part(locale, options, date, type) {
  const found = new Intl.DateTimeFormat(locale, options).formatToParts(date).find((p) => p.type === type);
  return found ? found.value : '';
}

/** The locale's first day of the week (1 Monday … 7 Sunday) and the days a first week needs. */
function weekRules(locale) {
  try {
    const info = new Intl.Locale(locale);
    const week = typeof info.getWeekInfo === 'function' ? info.getWeekInfo() : info.weekInfo;
    if (week && week.firstDay) return { firstDay: week.firstDay, minimalDays: week.minimalDays || 1 };
  } catch {
    // a locale the browser cannot describe counts weeks as ISO 8601 does
  }
  return { firstDay: 1, minimalDays: 4 };
}

const DAY = 86400000;

/** Day of the week, 1 Monday … 7 Sunday. */
const isoDay = (date) => ((date.getDay() + 6) % 7) + 1;

/** The week of year and its year, by the locale's rules. */
function weekOfYear(date, locale) {
  const { firstDay, minimalDays } = weekRules(locale);
  const offset = (isoDay(date) - firstDay + 7) % 7; // days since the week began
  const weekStart = new Date(date.getFullYear(), date.getMonth(), date.getDate() - offset);
  const firstWeekStart = (year) => {
    const jan1 = new Date(year, 0, 1);
    const back = (isoDay(jan1) - firstDay + 7) % 7;
    const start = new Date(year, 0, 1 - back);
    // The week holding 1 January is the first when enough of its days are in the year.
    return 7 - back >= minimalDays ? start : new Date(year, 0, 8 - back);
  };
  let year = date.getFullYear();
  if (weekStart >= firstWeekStart(year + 1)) year += 1;
  else if (weekStart < firstWeekStart(year)) year -= 1;
  const week = Math.round((weekStart - firstWeekStart(year)) / (7 * DAY)) + 1;
  return { week, year };
}

function weekOfMonth(date, locale) {
  const { firstDay, minimalDays } = weekRules(locale);
  const first = new Date(date.getFullYear(), date.getMonth(), 1);
  const back = (isoDay(first) - firstDay + 7) % 7;
  const daysInFirst = 7 - back;
  const index = Math.floor((date.getDate() - 1 + back) / 7);
  return daysInFirst >= minimalDays ? index + 1 : index;
}

function offsetText(date, { colon, zulu, optionalMinutes, gmt }) {
  const minutes = -date.getTimezoneOffset();
  if (minutes === 0 && zulu) return 'Z';
  if (minutes === 0 && gmt) return 'GMT';
  const sign = minutes < 0 ? '-' : '+';
  const hours = Math.floor(Math.abs(minutes) / 60);
  const rest = Math.abs(minutes) % 60;
  if (gmt === 'short') return `GMT${sign}${hours}${rest ? `:${pad(rest, 2)}` : ''}`;
  const hh = pad(hours, 2);
  const text = optionalMinutes && !rest ? `${sign}${hh}` : `${sign}${hh}${colon ? ':' : ''}${pad(rest, 2)}`;
  return gmt ? `GMT${text}` : text;
}

function field(date, { field: c, count }, locale) {
  const month = date.getMonth();
  const hours = date.getHours();
  const name = (options, type) => part(locale, options, date, type);
  switch (c) {
    case 'G':
      return name({ era: count === 4 ? 'long' : count === 5 ? 'narrow' : 'short' }, 'era');
    case 'y': case 'u': case 'U': case 'r': {
      const year = date.getFullYear();
      return c === 'y' && count === 2 ? pad(year % 100, 2) : pad(year, count);
    }
    case 'Y': {
      const { year } = weekOfYear(date, locale);
      return count === 2 ? pad(year % 100, 2) : pad(year, count);
    }
    case 'Q': case 'q': {
      const quarter = Math.floor(month / 3) + 1;
      if (count === 3) return `Q${quarter}`;
      if (count === 4) return `${quarter}${['st', 'nd', 'rd', 'th'][quarter - 1]} quarter`;
      if (count === 5) return String(quarter);
      return pad(quarter, count);
    }
    case 'M': case 'L': {
      const standalone = c === 'L';
      if (count === 3 || count === 4 || count === 5) {
        const style = count === 3 ? 'short' : count === 4 ? 'long' : 'narrow';
        if (standalone) return new Intl.DateTimeFormat(locale, { month: style }).format(date);
        return name({ month: style, day: 'numeric' }, 'month');
      }
      return pad(month + 1, count);
    }
    case 'w':
      return pad(weekOfYear(date, locale).week, count);
    case 'W':
      return pad(weekOfMonth(date, locale), count);
    case 'd':
      return pad(date.getDate(), count);
    case 'D': {
      const day = Math.round((new Date(date.getFullYear(), month, date.getDate()) - new Date(date.getFullYear(), 0, 1)) / DAY) + 1;
      return pad(day, count);
    }
    case 'F':
      return pad(Math.floor((date.getDate() - 1) / 7) + 1, count);
    case 'g': {
      const utc = Date.UTC(date.getFullYear(), month, date.getDate());
      return pad(Math.floor(utc / DAY) + 2440588, count);
    }
    case 'e': case 'c':
      if (count <= 2) {
        const { firstDay } = weekRules(locale);
        return pad(((isoDay(date) - firstDay + 7) % 7) + 1, c === 'c' ? 1 : count);
      }
    // fall through: three letters and more are names, as E
    case 'E': {
      if (count === 4) return name({ weekday: 'long' }, 'weekday');
      if (count === 5) return name({ weekday: 'narrow' }, 'weekday');
      if (count === 6) return name({ weekday: 'short' }, 'weekday').slice(0, 2);
      return name({ weekday: 'short' }, 'weekday');
    }
    case 'a': case 'b': {
      const period = name({ hour: 'numeric', hour12: true }, 'dayPeriod');
      if (c === 'b' && date.getMinutes() === 0 && (hours === 0 || hours === 12)) return hours === 0 ? 'midnight' : 'noon';
      return count === 5 ? period.charAt(0).toLowerCase() : period;
    }
    case 'B':
      return name({ hour: 'numeric', dayPeriod: count === 4 ? 'long' : count === 5 ? 'narrow' : 'short' }, 'dayPeriod');
    case 'h':
      return pad(hours % 12 || 12, count);
    case 'H':
      return pad(hours, count);
    case 'K':
      return pad(hours % 12, count);
    case 'k':
      return pad(hours || 24, count);
    case 'm':
      return pad(date.getMinutes(), count);
    case 's':
      return pad(date.getSeconds(), count);
    case 'S':
      // Fractions of a second: as many digits as letters, truncated.
      return pad(date.getMilliseconds(), 3).padEnd(count, '0').slice(0, count);
    case 'A':
      return pad(((hours * 60 + date.getMinutes()) * 60 + date.getSeconds()) * 1000 + date.getMilliseconds(), count);
    case 'z':
      return count === 4 ? name({ timeZoneName: 'long' }, 'timeZoneName') : name({ timeZoneName: 'short' }, 'timeZoneName');
    case 'v':
      return name({ timeZoneName: count === 4 ? 'longGeneric' : 'shortGeneric' }, 'timeZoneName');
    case 'V':
      if (count === 2) return Intl.DateTimeFormat().resolvedOptions().timeZone;
      return name({ timeZoneName: 'longGeneric' }, 'timeZoneName');
    case 'O':
      return offsetText(date, { gmt: count === 4 ? true : 'short', colon: true });
    case 'Z':
      if (count === 4) return offsetText(date, { gmt: true, colon: true });
      if (count === 5) return offsetText(date, { colon: true, zulu: true });
      return offsetText(date, {});
    case 'X': case 'x': {
      const zulu = c === 'X';
      if (count === 1) return offsetText(date, { zulu, optionalMinutes: true });
      return offsetText(date, { zulu, colon: count === 3 || count === 5 });
    }
    default:
      throw new DateFormatError(`\u201c${c}\u201d is not a date format letter`);
  }
}

/**
 * What pattern shows for date in locale (the browser's by default). Throws DateFormatError when
 * the pattern is not one.
 */
export function formatDate(pattern, date = new Date(), locale = undefined) {
  const language = locale || new Intl.DateTimeFormat().resolvedOptions().locale;
  return parsePattern(pattern)
    .map((piece) => (piece.text !== undefined ? piece.text : field(date, piece, language)))
    .join('');
}

/** What an empty pattern shows: the system's own short time. */
export function systemTime(date = new Date(), locale = undefined) {
  return new Intl.DateTimeFormat(locale, { timeStyle: 'short' }).format(date);
}
